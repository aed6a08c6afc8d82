# SPDX-License-Identifier: Apache-2.0
"""What the workstation's build compiles and links."""
import json
import re
import shlex

from support import BUILD, ROOT


def cmake_targets():
    """Returns the sources of each target and the command lines of its compilations."""
    targets = {}
    for entry in json.loads((BUILD / 'compile_commands.json').read_text()):
        words = shlex.split(entry['command'])
        name = re.search(r'CMakeFiles/(.+?)\.dir/', words[words.index('-o') + 1])[1]
        listed, commands = targets.setdefault(name, (set(), []))
        listed.update(sources_of(entry['file']))
        commands.append(words)
    return targets


def sources_of(file):
    """Returns a source, or those that a unity source includes, without precompiled headers."""
    if '/Unity/' in file:
        with open(file, encoding='utf-8') as unity:
            return {path.removeprefix(f'{ROOT}/')
                    for path in re.findall(r'#include "(.*\.cpp)"', unity.read())}
    is_made = file.startswith(f'{BUILD}/')
    return set() if is_made else {file.removeprefix(f'{ROOT}/')}


def cmake_wraps(file):
    """The functions that the linker replaces, of a CMakeLists.txt."""
    text = file.read_text()
    loop = re.search(r'foreach\(function (.*?)\)', text, re.S)
    names = loop[1].split() if loop else re.findall(r'--wrap=(\w+)', text)
    return {f'-Wl,--wrap={name}' for name in names}
