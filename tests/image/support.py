# SPDX-License-Identifier: Apache-2.0
"""The paths of the image's files, and helpers that run its tools."""
import os
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get('QOREXT_BUILD', ROOT / 'build/release'))
COMPILER = os.environ.get('QOREXT_CXX', 'c++')
ANDROID = ROOT / 'platform/android'

BLUEPRINT = ROOT / 'Android.bp'
INIT = ANDROID / 'init/qorext_client.rc'
UEVENTD = ANDROID / 'init/ueventd.qorext.rc'
VENDOR_POLICY = ANDROID / 'sepolicy/vendor'
PUBLIC_POLICY = ANDROID / 'sepolicy/system_ext_public'
PRIVATE_POLICY = ANDROID / 'sepolicy/system_ext_private'
PROPERTY_CONTEXTS = PRIVATE_POLICY / 'property_contexts'


def run(*command, text=None):
    """Runs a command and returns its result with text output; does not check its status."""
    tools = dict(os.environ, PATH=os.environ['PATH'] + ':/usr/sbin:/sbin')
    return subprocess.run([str(word) for word in command], input=text, env=tools, check=False,
                          capture_output=True, text=True)


def rows(path):
    """Returns the words of each line of a table, without comments."""
    lines = (line.split('#')[0].split() for line in path.read_text().splitlines())
    return [words for words in lines if words]


def product_literals(pattern):
    """Returns the string literals in the daemon's sources that match the pattern."""
    sources = [*ROOT.glob('src/**/*.cpp'), *ROOT.glob('src/**/*.h')]
    return {literal for source in sources
            for literal in re.findall(rf'"({pattern})"', source.read_text())}
