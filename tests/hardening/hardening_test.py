# SPDX-License-Identifier: Apache-2.0
"""How the executables are compiled and linked, as readelf and objdump show it.

Each property is also checked on a program that is built without it, to detect a check that cannot
fail.
"""
import os
import pathlib
import re
import subprocess
import unittest

PROGRAMS = pathlib.Path(os.environ['QOREXT_PROGRAMS'])
UNPROTECTED = pathlib.Path(os.environ['QOREXT_UNPROTECTED'])

# The instructions with which GCC and clang touch a page of a large frame: x86-64, arm64.
PROBE = re.compile(r'\sorq +\$0x0,\(%rsp\)|\smovq +\$0x0,\(%rsp\)|\sstr\s+xzr, \[sp, #1024\]')
# The valid targets of an indirect branch.
TARGET = re.compile(r'\s(endbr64|bti\s+c|paciasp)')
SAFE_FOLDERS = re.compile(r'(\$ORIGIN|\$ORIGIN/\.\./lib.*|/usr/lib/.*|/lib/.*)')


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Program:
    def __init__(self, path):
        self.path = path
        self.header = output_of('readelf', '-hW', path)
        self.segments = output_of('readelf', '-lW', path)
        self.dynamic = output_of('readelf', '-dW', path)
        self.imports = output_of('readelf', '--dyn-syms', '-W', path)

    def is_position_independent(self):
        return 'DYN' in self.header and bool(re.search(r'FLAGS_1.*\bPIE\b', self.dynamic))

    def has_full_relro(self):
        return 'GNU_RELRO' in self.segments and bool(re.search(r'FLAGS_1.*\bNOW\b', self.dynamic))

    def has_a_stack_that_is_not_executable(self):
        """Neither the stack nor another writable segment is executable."""
        return 'GNU_STACK' in self.segments and not re.search(r' RWE ', self.segments)

    def has_a_stack_protector(self):
        return '__stack_chk_fail' in self.imports

    def checks_the_size_of_library_calls(self):
        return bool(re.search(r'UND __\w+_chk\b', self.imports))

    def guards_indirect_branches(self):
        """By marked targets, or by checked calls (CFI)."""
        main = output_of('objdump', '-d', '--no-show-raw-insn', '--disassemble=main', self.path)
        first = main.partition('<main>:\n')[2].partition('\n')[0]
        return bool(TARGET.search(first)) or '.cfi' in output_of('readelf', '-sW', self.path)

    def searches_libraries_in_safe_folders_only(self):
        """Only in the system's folders and next to the program itself."""
        paths = re.findall(r'\(RUNPATH\).*\[(.*)\]', self.dynamic)
        folders = [folder for path in paths for folder in path.split(':')]
        return '(RPATH)' not in self.dynamic and all(map(SAFE_FOLDERS.fullmatch, folders))

    def probes_large_frames(self):
        return bool(PROBE.search(output_of('objdump', '-d', '--no-show-raw-insn', self.path)))


PROPERTIES = [name for name in vars(Program) if not name.startswith(('_', 'probes_'))]


class Hardening(unittest.TestCase):
    def check(self, path, expected, properties):
        program = Program(path)
        for name in properties:
            with self.subTest(program=path.name, property=name):
                self.assertIs(getattr(program, name)(), expected)

    def test_OfTheDaemon(self):
        # Only the daemon has frames larger than a page.
        self.check(PROGRAMS / 'qorext_client', True, [*PROPERTIES, 'probes_large_frames'])

    def test_OfTheModem(self):
        self.check(PROGRAMS / 'qorext_modem', True, PROPERTIES)

    def test_OfTheTool(self):
        self.check(PROGRAMS / 'qorextctl', True, PROPERTIES)

    def test_IsMissingInTheUnprotectedProgram(self):
        self.check(UNPROTECTED, False, [*PROPERTIES, 'probes_large_frames'])


if __name__ == '__main__':
    unittest.main()
