# SPDX-License-Identifier: Apache-2.0
"""Policy and list of system calls follow from the calls that the daemon makes in the handset."""
import re
import sys
import unittest

from expected import NEEDS
from recorded import Call, call_needs, calls, needs
from support import ROOT

sys.path.append(str(ROOT / 'tests/handset'))

import calls as handset_calls  # noqa: E402
import seccomp  # noqa: E402

MANUAL = (ROOT / 'docs/phone.md').read_text()


def rows_of_manual():
    """Returns (target, class, names of calls) for each row of the table of rules."""
    table = MANUAL.split('\n## SELinux domain\n')[1].split('\n### ')[0]
    rows = re.findall(r'^\| (`.*?`) \| (\w+) \| [a-z_ ]+ \| (.*) \|$', table, re.M)
    return [(target, kind, set(re.findall(r'`(\w+)`', reason)))
            for targets, kind, reason in rows for target in re.findall(r'`(\w+)`', targets)]


class Image(unittest.TestCase):
    def test_the_policy_allows_every_recorded_call_and_nothing_else(self):
        self.assertEqual(needs(calls()), {use: set(permissions.split())
                                          for use, permissions in NEEDS.items()})

    def test_each_rule_of_the_manual_names_recorded_calls_that_need_it(self):
        recorded = calls()
        rows = rows_of_manual()
        self.assertEqual({row[:2] for row in rows}, set(NEEDS))
        for target, kind, names in rows:
            users = {call.name for call in recorded if (target, kind) in call_needs(call)}
            self.assertTrue(users, (target, kind))
            self.assertEqual(names - users, set(), (target, kind))

    def test_a_call_that_the_policy_forbids_is_found(self):
        for line, use, permission in (
                ('ioctl QRTR', ('qorext_client', 'qipcrtr_socket'), 'ioctl'),
                ('flock /data/vorn/vorn_TIME.log', ('vorn_vendor_data_file', 'file'), 'lock'),
                ('newfstatat /proc/bootinfo', ('proc_bootinfo', 'file'), 'getattr'),
                ('mmap /dev/qor_hob_ram PROT_EXEC|MAP_SHARED',
                 ('qor_hob_ram_device', 'chr_file'), 'execute'),
                ('openat /proc/bootinfo O_RDWR', ('proc_bootinfo', 'file'), 'write'),
                ('newfstatat /data/vorn/.NNNN AT_SYMLINK_NOFOLLOW',
                 ('vorn_vendor_data_file', 'lnk_file'), 'getattr')):
            self.assertIn(permission, call_needs(Call(line))[use], line)
            self.assertNotIn(permission, NEEDS[use].split(), line)

    def test_an_object_without_a_label_is_reported(self):
        for line in ('openat /data/other O_RDONLY', 'openat /dev/mem O_RDWR = EACCES'):
            with self.assertRaises(LookupError):
                call_needs(Call(line))

    def test_a_failed_call_needs_only_the_lookup_of_its_path(self):
        self.assertEqual(call_needs(Call('openat /data/vorn/.NNNN O_RDONLY = ENOENT')),
                         {('system_data_file', 'lnk_file'): {'read'},
                          ('vendor_data_file', 'dir'): {'search'},
                          ('vorn_vendor_data_file', 'dir'): {'search'}})

    def test_the_list_of_system_calls_is_that_of_the_record(self):
        names = handset_calls.names(handset_calls.read())
        self.assertGreater(len(names), 30)
        self.assertEqual(seccomp.POLICY.read_text(), seccomp.policy(names))

    def test_no_system_call_is_listed_twice(self):
        names = re.findall(r'^(\w+):', seccomp.POLICY.read_text(), re.M)
        self.assertEqual(sorted(names), sorted(set(names)))

    def test_the_list_has_no_call_that_starts_a_process_or_changes_a_privilege(self):
        text = seccomp.POLICY.read_text()
        names = set(re.findall(r'^(\w+):', text, re.M))
        self.assertEqual(names & set('ptrace mount chroot setns unshare capset setgroups setgid '
                                     'kill bpf perf_event_open ioctl mknodat'.split()), set())
        for line in ('clone: arg0 & CLONE_THREAD', 'clone3: return ENOSYS',
                     'mprotect: arg2 in ~PROT_EXEC || arg2 in ~PROT_WRITE'):
            self.assertIn(f'\n{line}\n', text)

    def test_the_traces_are_summarized_by_object_flags_and_error(self):
        vorn = '/phone/data/vendor/vorn'
        lines = [
            ('openat(AT_FDCWD</phone>, "/data/vorn/~vorn0007.log", O_RDWR|O_CREAT|O_TRUNC, 0740)'
             f' = 5<{vorn}/~vorn0007.log>',
             'openat /data/vorn/~vornNNNN.log O_RDWR|O_CREAT|O_TRUNC'),
            (f'fsync(5<{vorn}/vorn_20260101000000.log>) = 0', 'fsync /data/vorn/vorn_TIME.log'),
            ('symlinkat("/data/vorn/vorn_1.log", AT_FDCWD</phone>, "/data/vorn/.new") = 0',
             'symlinkat /data/vorn/.new'),
            ('renameat(AT_FDCWD</>, "/data/vorn/.new", AT_FDCWD</>, "/data/vorn/.0001") = 0',
             'renameat /data/vorn/.new /data/vorn/.NNNN'),
            ('readlinkat(AT_FDCWD</>, "/data/vorn/.0001", 0x1, 255) = -1 ENOENT (No such file)',
             'readlinkat /data/vorn/.NNNN = ENOENT'),
            ('mmap(NULL, 32768, PROT_READ|PROT_WRITE, MAP_SHARED, 7</dev/qor_hob_ram>, 0xf540000)'
             ' = 0xffff', 'mmap /dev/qor_hob_ram PROT_READ|PROT_WRITE|MAP_SHARED'),
            ('write(2<pipe:[5]>, ""..., 30) = 30', 'write LOG'),
            ('write(9<pipe:[5]>, ""..., 30) = -1 EPIPE (Broken pipe)', 'write PIPE = EPIPE'),
            ('recvmsg(4<socket:[5]>, 0x1, 0) = -1 EAGAIN (Try again)', 'recvmsg QRTR'),
            ('exit_group(0) = ?', 'exit_group'),
            ('--- SIGCHLD {si_signo=SIGCHLD} ---', None),
        ]
        for line, expected in lines:
            self.assertEqual(handset_calls.summary(line), expected)

    def test_calls_before_the_daemon_are_no_part_of_the_record(self):
        trace = ('chroot("/phone") = 0\n'
                 'execve("/system/bin/qorext_client", [], 0x1 /* 8 vars */) = 0\ngetpid() = 1\n')
        self.assertEqual(handset_calls.summarize([trace]),
                         ['execve /system/bin/qorext_client', 'getpid'])


if __name__ == '__main__':
    unittest.main()
