# SPDX-License-Identifier: Apache-2.0
"""The files that the daemon opens on the phone exist and are accessible to it."""
import re
import unittest

from support import INIT, ROOT, UEVENTD, product_literals, rows

# The phone's users and groups.
PHONE_IDS = {'root': 0, 'radio': 1001, 'diag': 2002}


def constant(source, name):
    """Returns a numeric constant of the daemon. A leading 0 means octal."""
    value = re.search(rf'{name} = (\w+);', (ROOT / 'src' / source).read_text()).group(1)
    return int(value, 8 if value.startswith('0') else 10)


class Image(unittest.TestCase):
    def setUp(self):
        self.user = constant('host/main.cpp', 'kRadioUser')
        self.log_group = constant('capture/kpi_logs.cpp', 'kLogGroup')

    def test_the_log_directory_has_the_mode_and_the_group_that_the_daemon_uses(self):
        command, folder, mode, owner, group = rows(INIT)[1]
        self.assertEqual((command, folder), ('mkdir', '/data/vendor/vorn'))
        self.assertEqual(int(mode, 8), constant('capture/kpi_store.cpp', 'kDirectoryMode'))
        self.assertEqual(PHONE_IDS[owner], self.user)
        self.assertEqual(PHONE_IDS[group], self.log_group)

    def test_the_path_that_the_daemon_uses_is_a_link_to_the_log_directory(self):
        (directory,) = product_literals(r'/data/\w+')
        self.assertEqual(rows(INIT)[2:], [['symlink', '/data/vendor/vorn', directory]])

    def test_the_data_partition_is_mounted_when_the_directory_is_created(self):
        self.assertEqual(rows(INIT)[0], ['on', 'post-fs-data'])

    def test_the_radio_user_may_read_and_write_the_nodes_that_the_daemon_opens(self):
        nodes = {path.replace('/bootdevice/', '/') for path in product_literals(r'/dev/[^"]*')}
        self.assertEqual({row[0] for row in rows(UEVENTD)}, nodes)
        for _, mode, owner, group in rows(UEVENTD):
            self.assertEqual(int(mode, 8), 0o660)
            self.assertEqual(PHONE_IDS[owner], 0)
            self.assertEqual(PHONE_IDS[group], self.user)


if __name__ == '__main__':
    unittest.main()
