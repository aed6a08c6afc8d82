# SPDX-License-Identifier: Apache-2.0
"""The sources of the image's modules compile with a phone's headers, as the blueprints list them."""
import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import tempfile

from modules import Modules
from support import BLUEPRINT, ROOT
from tree import CLANG, compiler_resources, host_libcxx

WITH_STUBS = Modules(BLUEPRINT, ('modem', 'stubs'))
# The modules of each check; the daemon is compiled with the vendor's headers and with the stubs'.
CHECKS = {
    'daemon': (Modules(BLUEPRINT), ['qorext_client']),
    'stubs': (WITH_STUBS, ['qorext_client', 'qorext_parent',
                           *(name for name in WITH_STUBS if name.startswith('libqorext_stub_'))]),
    'modem': (WITH_STUBS, ['qorext_modem']),
}
TARGET = 'aarch64-linux-android33'
# Header libraries that an integrator adds for the modem: the workstation's, by their folders.
WORKSTATION = pathlib.Path('/usr/include')
ADDED_HEADERS = ('CLI', 'fmt', 'nlohmann', 'toml++')
# The workstation's C++ library expects the NDK's version.
NDK_VERSION = '#define __NDK_MAJOR__ 26\n'


def system_folders(headers):
    return [headers.libcxx or host_libcxx(), compiler_resources() / 'include',
            headers.bionic / 'include', headers.bionic / 'kernel/uapi',
            headers.bionic / 'kernel/uapi/asm-arm64', headers.bionic / 'kernel/android/uapi']


def make_added_headers(folder):
    """What neither the phone's parts nor this repository have."""
    for name in ADDED_HEADERS:
        (folder / name).symlink_to(WORKSTATION / name)
    (folder / 'android').mkdir()
    (folder / 'android/ndk-version.h').write_text(NDK_VERSION)


def copy_vendor_headers(folder):
    """Of platform/include those that only vendor libraries bring: the phone has the others."""
    for header in (ROOT / 'platform/include').glob('*.h'):
        shutil.copy(header, folder)


def include_folders(modules, name, headers, vendor):
    """In the order in which the phone's build searches them. `vendor` holds the vendor's headers."""
    entry = modules.properties(name)
    folders = [modules.root / folder for folder in entry['local_include_dirs']]
    for library in entry.get('header_libs', []):
        exported = modules.properties(library)['export_include_dirs'] if library in modules else []
        folders += [modules.root / folder for folder in exported] or [vendor]
    return [*folders, headers.liblog, headers.libcutils]


def command(modules, name, headers, system, vendor):
    """Compiles a source of a module; the phone's build switches exceptions and RTTI off."""
    rtti = modules.properties(name).get('rtti')
    folders = include_folders(modules, name, headers, vendor)
    return [CLANG, f'--target={TARGET}', '-nostdinc', '-nostdinc++', '-fsyntax-only',
            '-fno-exceptions', '-frtti' if rtti else '-fno-rtti', *modules.flags(name),
            *(word for folder in system for word in ('-isystem', folder)),
            *(word for folder in folders for word in ('-I', folder))]


def compile_one(words):
    done = subprocess.run(words, check=False, capture_output=True, text=True)
    return done.stderr if done.returncode else ''


def failures(headers, modules, names):
    """The compiler's messages for each source that fails."""
    with tempfile.TemporaryDirectory() as vendor, tempfile.TemporaryDirectory() as added:
        copy_vendor_headers(vendor)
        make_added_headers(pathlib.Path(added))
        system = [*system_folders(headers), added]
        commands = [[*command(modules, name, headers, system, vendor), modules.root / source]
                    for name in names for source in modules.sources(name)]
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return [text for text in pool.map(compile_one, commands) if text]
