# SPDX-License-Identifier: Apache-2.0
"""The policy allows what the daemon needs, no more, and breaks none of the platform's rules.

platform_policy stands for the platform's policy: the part of it that the daemon's meets.
"""
import pathlib
import re
import tempfile
import unittest

from support import PROPERTY_CONTEXTS, ROOT, VENDOR_POLICY, product_literals, rows, run

PLATFORM = pathlib.Path(__file__).resolve().parent / 'platform_policy'
RULES = VENDOR_POLICY / 'qorext_client.te'

PHONE_PATH = r'/(?:data/\w+|dev/[^"]*|proc/[^"]*|sys/[^"]*)'
PROPERTY = r'r(?:o|il)\.[a-z._]+'

# What the daemon does, as permissions of its parent's domain.
NEEDS = {
    ('qorext_client_exec', 'file'): 'execute execute_no_trans getattr map open read',
    ('rild', 'qipcrtr_socket'): 'bind connect create getattr getopt read setopt write',
    ('init', 'unix_stream_socket'): 'connectto',
    ('property_socket', 'sock_file'): 'write',
    ('radio_prop', 'property_service'): 'set',
    ('radio_prop', 'file'): 'getattr map open read',
    ('bootloader_prop', 'file'): 'getattr map open read',
    ('telephony_config_prop', 'file'): 'getattr map open read',
    ('proc_bootinfo', 'file'): 'open read',
    ('sysfs_modem_restarts', 'file'): 'open read',
    ('qor_hob_ram_device', 'chr_file'): 'map open read write',
    ('block_device', 'dir'): 'search',
    ('dhob_block_device', 'blk_file'): 'open read write',
    ('system_data_file', 'lnk_file'): 'read',
    ('vendor_data_file', 'dir'): 'search',
    ('vorn_vendor_data_file', 'dir'): 'add_name open read remove_name search write',
    ('vorn_vendor_data_file', 'file'): 'append create getattr open read setattr unlink write',
    ('vorn_vendor_data_file', 'lnk_file'): 'create getattr read rename unlink',
}
DROPBOX_NEEDS = {
    ('servicemanager', 'binder'): 'call transfer',
    ('system_server', 'binder'): 'call transfer',
    ('system_server', 'fd'): 'use',
    ('dropbox_service', 'service_manager'): 'find',
}
TYPE_OF_PATH = {
    '/dev/qor_hob_ram': 'qor_hob_ram_device',
    '/dev/block/bootdevice/by-name/dhob': 'dhob_block_device',
    '/data/vorn': 'system_data_file',
    '/data/vendor/vorn': 'vorn_vendor_data_file',
    '/data/vendor/vorn/vorn_20261116065532.log': 'vorn_vendor_data_file',
    '/data/vendor/vorn/.0001': 'vorn_vendor_data_file',
    '/dev/block/by-name/dhob': 'dhob_block_device',
    '/dev/block/platform/soc/1d84000.ufshc/by-name/dhob': 'dhob_block_device',
    '/dev/block/by-name/modem': 'block_device',
    '/vendor/bin/qorext_client': 'qorext_client_exec',
    '/vendor/bin/sh': 'vendor_file',
}
TYPE_OF_KERNEL_FILE = {
    '/proc/bootinfo': 'proc_bootinfo',
    '/sys/module/subsystem_restart/parameters/modem_restarts': 'sysfs_modem_restarts',
    '/sys/module/pil_q6v5_mss/parameters/ssr_reason': 'sysfs_modem_restarts',
}


def type_in(context):
    return context.split(':')[2]


def own_domain(rule):
    """Rules for a domain that the daemon would enter when its parent starts it."""
    return f'\ntype qorext_client, domain;\n{rule}\n'


class Image(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def compile(self, treble=True, more=''):
        """checkpolicy's outcome for the platform's policy with the daemon's and `more` rules."""
        extra = self.folder / 'more.te'
        extra.write_text(more)
        parts = [PLATFORM / 'macros.m4', PLATFORM / 'classes', PLATFORM / 'domains.te', RULES,
                 extra, PLATFORM / 'contexts', PLATFORM / 'genfs_contexts',
                 VENDOR_POLICY / 'genfs_contexts']
        expanded = run('m4', '-s', f'-DFULL_TREBLE={str(treble).lower()}', *parts)
        self.assertEqual((expanded.returncode, expanded.stderr), (0, ''))
        source = self.folder / 'policy.conf'
        source.write_text(expanded.stdout)
        return run('checkpolicy', '-M', '-c', '30', '-o', self.policy(), source)

    def policy(self):
        return self.folder / 'policy'

    def assert_compiles(self, **parts):
        outcome = self.compile(**parts)
        self.assertEqual(outcome.returncode, 0, outcome.stderr)

    def assert_never_allowed(self, rule, **parts):
        outcome = self.compile(**parts)
        self.assertNotEqual(outcome.returncode, 0)
        self.assertRegex(outcome.stderr, rf'neverallow .*violated by allow {rule}')

    def allowed(self, *query):
        """(target, class) to permissions, from the compiled policy."""
        found = run('sesearch', '-A', '-ds', *query, self.policy())
        self.assertEqual(found.returncode, 0, found.stderr)
        lines = re.findall(r'^allow \w+ (\w+):(\w+) (?:{ (.*) }|(\w+));$', found.stdout, re.M)
        return {(target, kind): set((many or one).split()) for target, kind, many, one in lines}

    def assert_allowed(self, needs):
        allowed = self.allowed('-s', 'rild')
        self.assertEqual(set(allowed), set(needs))
        for use, permissions in needs.items():
            self.assertLessEqual(set(permissions.split()), allowed[use], use)

    def file_contexts(self):
        both = self.folder / 'file_contexts'
        both.write_text((PLATFORM / 'file_contexts').read_text() +
                        (VENDOR_POLICY / 'file_contexts').read_text())
        return both

    def compile_contexts(self, contexts):
        return run('sefcontext_compile', '-p', self.policy(), '-o', self.folder / 'out', contexts)

    def assert_valid(self, contexts):
        outcome = self.compile_contexts(contexts)
        self.assertEqual((outcome.returncode, outcome.stderr), (0, ''))

    def test_the_policy_allows_what_the_daemon_needs_and_nothing_else(self):
        self.assert_compiles()
        self.assert_allowed(NEEDS)

    def test_where_vendors_may_call_system_services_the_policy_allows_the_dropbox(self):
        self.assert_compiles(treble=False)
        self.assert_allowed(NEEDS | DROPBOX_NEEDS)

    def test_a_full_treble_phone_refuses_the_dropbox_to_vendors(self):
        self.assert_never_allowed('rild dropbox_service', treble=True,
                                  more='allow rild dropbox_service:service_manager find;\n')

    def test_the_parent_starts_the_daemon_without_a_change_of_domain(self):
        self.assert_compiles()
        for kind in ('process', 'file'):
            transitions = run('sesearch', '-T', '-s', 'rild', '-c', kind, self.policy())
            self.assertEqual((transitions.returncode, transitions.stdout), (0, ''))

    def test_a_domain_of_its_own_may_not_set_the_radio_properties(self):
        self.assert_never_allowed('qorext_client radio_prop',
                                  more=own_domain('set_prop(qorext_client, radio_prop)'))

    def test_a_domain_of_its_own_may_do_the_rest(self):
        self.assert_compiles(more=own_domain('allow qorext_client qor_hob_ram_device:chr_file '
                                             'rw_file_perms;'))

    def test_logs_directly_below_data_would_be_refused(self):
        self.assert_never_allowed('rild system_data_file',
                                  more='allow rild system_data_file:dir rw_dir_perms;\n')

    def test_the_file_contexts_name_types_of_the_policy(self):
        self.assert_compiles()
        self.assert_valid(self.file_contexts())

    def test_a_context_of_an_unknown_type_would_be_noticed(self):
        self.assert_compiles()
        wrong = self.folder / 'wrong'
        wrong.write_text('/dev/qor_hob_ram u:object_r:no_such_device:s0\n')
        self.assertNotEqual(self.compile_contexts(wrong).returncode, 0)

    def test_the_paths_of_the_daemon_carry_the_types_that_the_rules_name(self):
        contexts = self.file_contexts()
        for path, expected in TYPE_OF_PATH.items():
            found = run('selabel_lookup', '-b', 'file', '-f', contexts, '-k', path)
            self.assertEqual(type_in(found.stdout.split()[-1]), expected, path)

    def test_the_kernel_files_of_the_daemon_carry_the_types_that_the_rules_name(self):
        mounts = {'proc': '/proc', 'sysfs': '/sys'}
        found = {mounts[system] + path: type_in(context)
                 for _, system, path, context in rows(VENDOR_POLICY / 'genfs_contexts')}
        self.assertEqual(found, TYPE_OF_KERNEL_FILE)

    def test_every_path_of_the_daemon_is_among_them(self):
        paths = product_literals(PHONE_PATH)
        self.assertEqual(len(paths), 6)
        self.assertLessEqual(paths, set(TYPE_OF_PATH) | set(TYPE_OF_KERNEL_FILE))

    def test_every_property_of_the_daemon_has_a_type_that_it_may_use(self):
        properties = product_literals(PROPERTY)
        self.assertEqual(len(properties), 6)
        contexts = rows(PLATFORM / 'property_contexts')[1:] + rows(PROPERTY_CONTEXTS)
        for name in properties:
            (kind,) = (type_in(row[1]) for row in contexts
                       if name == row[0] or row[0].endswith('.') and name.startswith(row[0]))
            need = ('property_service', 'set') if name.startswith('ril.') else ('file', 'read')
            self.assertIn(need[1], NEEDS[kind, need[0]].split(), name)

    def test_the_manual_names_every_path_property_and_type(self):
        manual = (ROOT / 'docs/phone.md').read_text()
        names = product_literals(PHONE_PATH) | product_literals(PROPERTY)
        names |= set(re.findall(r'^type (\w+)', RULES.read_text(), re.M))
        self.assertEqual([name for name in sorted(names) if f'`{name}`' not in manual], [])

    def test_the_property_contexts_name_types_of_the_policy(self):
        self.assert_compiles()
        as_files = self.folder / 'property_contexts'
        as_files.write_text(''.join(f'/{name} {context}\n'
                                    for name, context, *_ in rows(PROPERTY_CONTEXTS)))
        self.assert_valid(as_files)


if __name__ == '__main__':
    unittest.main()
