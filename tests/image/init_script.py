# SPDX-License-Identifier: Apache-2.0
"""The init scripts use keywords that init has."""
import re

from support import INIT, UEVENTD, rows

# Commands and their numbers of arguments, as in system/core/init/builtins.cpp, where a tree has none.
BUILTINS = {'mkdir': (1, 6), 'symlink': (2, 2)}
BUILTIN_ROW = re.compile(r'\{"(\w+)", +\{ *(\d+), +(\w+),')
SECTIONS = ('on', 'service', 'import')


def builtins_of(tree):
    source = tree / 'system/core/init/builtins.cpp'
    if not source.is_file():
        return BUILTINS
    return {name: (int(minimum), int(maximum) if maximum.isdigit() else 1000)
            for name, minimum, maximum in BUILTIN_ROW.findall(source.read_text())}


def script_errors(tree):
    known = builtins_of(tree)
    errors = []
    for number, (word, *arguments) in enumerate(rows(INIT)):
        if word in SECTIONS:
            continue
        minimum, maximum = known.get(word, (0, -1))
        if number == 0 or not minimum <= len(arguments) <= maximum:
            errors.append(f'{INIT.name}: {" ".join([word, *arguments])}')
    # NODE MODE USER GROUP
    errors += [f'{UEVENTD.name}: {" ".join(row)}' for row in rows(UEVENTD)
               if len(row) != 4 or not re.fullmatch(r'0[0-7]{3}', row[1])]
    return errors
