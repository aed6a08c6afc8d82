# SPDX-License-Identifier: Apache-2.0
"""Where a phone's source tree, or a folder of parts of several releases, has what the daemon meets.

A source tree has one release: bionic/libc, system/sepolicy, ... A folder of parts has one folder for
each release instead: bionic/13/libc, libcxx/14/include, sepolicy/12, include/liblog.
"""
import dataclasses
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
CLANG = 'clang++'


@dataclasses.dataclass
class Headers:
    """One compilation's headers, in the order in which the compiler searches them."""
    name: str
    libcxx: pathlib.Path | None  # the host's, if none is given
    bionic: pathlib.Path
    liblog: pathlib.Path
    libcutils: pathlib.Path


@dataclasses.dataclass
class Policy:
    """The platform's policy of a release: folders public, private, vendor."""
    name: str
    folder: pathlib.Path


def compiler_resources():
    done = subprocess.run([CLANG, '-print-resource-dir'], check=True, capture_output=True, text=True)
    return pathlib.Path(done.stdout.strip())


def host_libcxx():
    """The compiler's own C++ library, as new as that of the latest releases."""
    return compiler_resources().parents[2] / 'include/c++/v1'


def first_folder(*folders):
    return next((folder for folder in folders if folder.is_dir()), None)


def releases(folder):
    return sorted((entry for entry in folder.glob('[0-9]*') if entry.is_dir()),
                  key=lambda entry: int(entry.name))


def headers_of(tree):
    """Every pair of C library and C++ library that the tree has."""
    parts = tree / 'include'
    bionics = [(entry.name, entry / 'libc') for entry in releases(tree / 'bionic')]
    libraries = [(entry.name, entry / 'include') for entry in releases(tree / 'libcxx')]
    if not bionics and (tree / 'bionic/libc').is_dir():
        bionics = [('tree', tree / 'bionic/libc')]
        library = first_folder(tree / 'external/libcxx/include',
                               tree / 'external/llvm-libcxx/include')
        libraries = [('tree', library)] if library else []
    liblog = first_folder(parts / 'liblog', tree / 'system/logging/liblog/include')
    libcutils = first_folder(parts / 'libcutils', tree / 'system/core/libcutils/include')
    libraries.append(('host', None))
    return [Headers(f'bionic {release}, libc++ {version}', library, bionic, liblog, libcutils)
            for release, bionic in bionics for version, library in libraries]


def policies_of(tree):
    found = [Policy(entry.name, entry) for entry in releases(tree / 'sepolicy')]
    whole = tree / 'system/sepolicy'
    return found or ([Policy('tree', whole)] if (whole / 'public').is_dir() else [])
