# SPDX-License-Identifier: Apache-2.0
"""Each row of the daemon's tables has a unit test, a row of the tool and a line in docs/."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
REQUEST_TABLES = ('src/host/dispatch.cpp', 'src/carrier/carrier_handler.cpp')
INDICATION_TABLES = ('src/host/indications.cpp',)
# What a row needs: where its number has to stand, and what to do when it does not.
REQUEST_NEEDS = {
    'tests/unit/product/*.cpp': 'add a test to tests/unit/product',
    'protocol/*.cpp': 'add a row to a table in protocol/',
    'docs/host-protocol.md': 'run ./dev docs',
}
INDICATION_NEEDS = {
    'tests/unit/product/*.cpp': 'add a test to tests/unit/product',
    'platform/linux/qmi_qorext/qorext.cpp': 'add a row to platform/linux/qmi_qorext/qorext.cpp',
    'docs/modem-messages.md': 'run ./dev docs',
}


def rows_of(tables):
    """The first members of the rows, `{0x50019, 0, handler},`."""
    return [int(number, 16) for table in tables
            for number in re.findall(r'^ {4}\{(0x[0-9A-F]+),', (ROOT / table).read_text(),
                                     re.MULTILINE)]


def numbers_in(pattern):
    files = sorted(ROOT.glob(pattern))
    return {int(number, 16) for file in files
            for number in re.findall(r'\b0x([0-9A-Fa-f]+)\b', file.read_text())}


def missing(rows, needs):
    """One line for each row and need that is not met."""
    lines = []
    for pattern, remedy in needs.items():
        there = numbers_in(pattern)
        lines += [f'0x{row:X}: {remedy}' for row in rows if row not in there]
    return lines


class Tables(unittest.TestCase):
    def test_each_request_is_tested_sent_by_the_tool_and_documented(self):
        rows = rows_of(REQUEST_TABLES)
        self.assertGreater(len(rows), 50)
        self.assertEqual(missing(rows, REQUEST_NEEDS), [])

    def test_each_indication_is_tested_sent_by_the_modem_and_documented(self):
        rows = rows_of(INDICATION_TABLES)
        self.assertGreater(len(rows), 5)
        self.assertEqual(missing(rows, INDICATION_NEEDS), [])

    def test_a_row_without_anything_is_noticed(self):
        self.assertEqual(missing([0x2FFFFFF], REQUEST_NEEDS),
                         [f'0x2FFFFFF: {remedy}' for remedy in REQUEST_NEEDS.values()])
        self.assertEqual(missing([0xFFF1], INDICATION_NEEDS),
                         [f'0xFFF1: {remedy}' for remedy in INDICATION_NEEDS.values()])


if __name__ == '__main__':
    unittest.main()
