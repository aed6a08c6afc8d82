# SPDX-License-Identifier: Apache-2.0
"""Folders include only from the layers below them, in the order of docs/architecture.md."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LAYERS = (ROOT / 'docs/architecture.md').read_text().split('\n## Layers\n')[1].split('\n## ')[0]
ROWS = {row[1]: re.findall(r'`([^`]+)`', row[2])
        for row in re.finditer(r'^\| `([^`]+)` \| (.*) \|$', LAYERS, re.MULTILINE)}
# The declarations of the phone's interfaces include only each other.
PHONE = ('platform/include', 'platform/android/include')


def folder_of(path):
    return str(pathlib.PurePath(path).parent)


def wrong_includes(folder, text):
    """Returns the included headers of the repository that the folder's row does not allow."""
    allowed = {folder, *ROWS.get(folder, [])}
    headers = re.findall(r'^#include "([^"]+)"', text, re.MULTILINE)
    return [header for header in headers
            if (ROOT / header).exists() and folder_of(header) not in allowed]


class Layers(unittest.TestCase):
    def test_a_row_names_only_folders_further_down(self):
        order = list(ROWS)
        for place, folder in enumerate(order):
            self.assertLessEqual(set(ROWS[folder]), set(order[place + 1:]), folder)

    def test_folders_include_only_what_their_row_names(self):
        for top in ('common', 'modem', 'platform', 'protocol', 'src', 'tools'):
            for file in sorted((ROOT / top).rglob('*.[ch]*')):
                folder = folder_of(file.relative_to(ROOT))
                if file.suffix in ('.cpp', '.h') and not folder.startswith(PHONE):
                    self.assertIn(folder, ROWS)
                    self.assertEqual(wrong_includes(folder, file.read_text()), [], file)

    def test_an_upward_include_is_noticed(self):
        text = '#include "src/host/base/log.h"\n#include "src/host/host.h"\n'
        self.assertEqual(wrong_includes('src/vendor', text), ['src/host/host.h'])


if __name__ == '__main__':
    unittest.main()
