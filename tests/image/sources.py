# SPDX-License-Identifier: Apache-2.0
"""The daemon's sources compile with a phone's headers."""
import concurrent.futures
import os
import shutil
import subprocess
import tempfile

from tree import CLANG, ROOT, compiler_resources, host_libcxx

TARGET = 'aarch64-linux-android33'
FLAGS = ['-std=c++20', '-fno-exceptions', '-fno-rtti', '-fsyntax-only', '-D_GNU_SOURCE', '-Wall',
         '-Wextra', '-Wconversion', '-Wshadow', '-Werror']


def daemon_sources():
    listed = subprocess.run(['git', '-C', ROOT, 'ls-files', 'src/*.cpp'], check=True,
                            capture_output=True, text=True)
    return [ROOT / name for name in listed.stdout.split()]


def command(headers, own_headers):
    system = [headers.libcxx or host_libcxx(), compiler_resources() / 'include', headers.bionic / 'include',
              headers.bionic / 'kernel/uapi', headers.bionic / 'kernel/uapi/asm-arm64',
              headers.bionic / 'kernel/android/uapi']
    own = [ROOT / 'platform/android/include', ROOT, headers.liblog, headers.libcutils, own_headers]
    return [CLANG, f'--target={TARGET}', '-nostdinc', '-nostdinc++', *FLAGS,
            *(word for folder in system for word in ('-isystem', folder)),
            *(word for folder in own for word in ('-I', folder))]


def failures(headers):
    """The compiler's messages for each source that fails."""
    with tempfile.TemporaryDirectory() as own_headers:
        # Of platform/include those that only vendor libraries bring: the phone has the others.
        for header in (ROOT / 'platform/include').glob('*.h'):
            shutil.copy(header, own_headers)
        words = command(headers, own_headers)

        def compile_one(source):
            done = subprocess.run([*words, source], check=False, capture_output=True, text=True)
            return done.stderr if done.returncode else ''

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return [text for text in pool.map(compile_one, daemon_sources()) if text]
