# SPDX-License-Identifier: Apache-2.0
"""The tests that the handset leaves out exist: a renamed test would otherwise run there again."""
import fnmatch
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
MACRO = re.compile(r'\b(?:TYPED_)?TEST(?:_[FP])?\((\w+),\s*(\w+)\)')


def test_names():
    names = set()
    for source in (ROOT / 'tests').rglob('*.cpp'):
        text = source.read_text()
        names |= {f'{suite}.{case}' for suite, case in MACRO.findall(text)}
    return names


def left_out():
    """The patterns of the unit tests and of the end-to-end tests, without those of instances."""
    listed = (ROOT / 'tests/handset/CMakeLists.txt').read_text().split('set(left_out')[1]
    patterns = listed.split(')')[0].split()
    rows = (ROOT / 'tests/handset/left_out').read_text().splitlines()
    patterns += [row.split()[0] for row in rows if row and not row.startswith('#')]
    return [pattern for pattern in patterns if '/' not in pattern]


def unknown(patterns, names):
    return [pattern for pattern in patterns if not fnmatch.filter(names, pattern)]


class LeftOut(unittest.TestCase):
    def test_each_pattern_selects_a_test(self):
        names, patterns = test_names(), left_out()
        self.assertGreater(len(names), 500)
        self.assertGreater(len(patterns), 40)
        self.assertEqual(unknown(patterns, names), [])

    def test_a_former_name_is_noticed(self):
        self.assertEqual(unknown(['Former.*', 'Now.*'], {'Now.Is'}), ['Former.*'])


if __name__ == '__main__':
    unittest.main()
