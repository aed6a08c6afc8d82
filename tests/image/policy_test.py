# SPDX-License-Identifier: Apache-2.0
"""The policy allows exactly what the daemon needs and violates none of the platform's rules.

platform_policy represents the part of Android 13's policy that concerns the daemon. check_tree
compiles the policy with the policies of whole releases.
"""
import pathlib
import re
import tempfile
import unittest

from expected import (NEEDS, PARENT, TYPE_OF_KERNEL_FILE, TYPE_OF_PATH, TYPE_OF_PROPERTY,
                      confinement_rules, documented_rules, dropbox_rules)
from policy import property_label
from support import (PRIVATE_POLICY, PROPERTY_CONTEXTS, PUBLIC_POLICY, ROOT, VENDOR_POLICY,
                     product_literals, rows, run)

PLATFORM = pathlib.Path(__file__).resolve().parent / 'platform_policy'
RULES = VENDOR_POLICY / 'qorext_client.te'
MANUAL = (ROOT / 'docs/phone.md').read_text()

PHONE_PATH = r'/(?:data/\w+|dev/[^"]*|proc/[^"]*|sys/[^"]*)'
PROPERTY = r'r(?:o|il)\.[a-z._]+'


def type_in(context):
    return context.split(':')[2]


class Image(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def compile(self, more=''):
        """Returns checkpolicy's result for the platform's policy, the daemon's rules and `more`."""
        extra = self.folder / 'more.te'
        extra.write_text(more)
        parts = [PLATFORM / 'macros.m4', PLATFORM / 'classes', PLATFORM / 'domains.te',
                 PUBLIC_POLICY / 'property.te', PRIVATE_POLICY / 'property_readers.te', RULES,
                 extra, PLATFORM / 'contexts', PLATFORM / 'genfs_contexts',
                 VENDOR_POLICY / 'genfs_contexts']
        expanded = run('m4', '-s', *parts)
        self.assertEqual((expanded.returncode, expanded.stderr), (0, ''))
        source = self.folder / 'policy.conf'
        source.write_text(expanded.stdout)
        return run('checkpolicy', '-M', '-c', '30', '-o', self.policy(), source)

    def policy(self):
        return self.folder / 'policy'

    def assert_compiles(self, more=''):
        outcome = self.compile(more)
        self.assertEqual(outcome.returncode, 0, outcome.stderr)

    def assert_never_allowed(self, rule, more):
        outcome = self.compile(more)
        self.assertNotEqual(outcome.returncode, 0)
        self.assertRegex(outcome.stderr, rf'neverallow .*violated by allow {rule}')

    def allowed(self, *query):
        """Returns the permissions for each (target, class) in the compiled policy."""
        found = run('sesearch', '-A', '-ds', *query, self.policy())
        self.assertEqual(found.returncode, 0, found.stderr)
        lines = re.findall(r'^allow \w+ (\w+):(\w+) (?:{ (.*) }|(\w+));$', found.stdout, re.M)
        return {(target, kind): set((many or one).split()) for target, kind, many, one in lines}

    def assert_allowed(self, domain, needs):
        needed = {use: set(permissions.split()) for use, permissions in needs.items()}
        self.assertEqual(self.allowed('-s', domain), needed)

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

    def test_the_policy_allows_exactly_what_the_daemon_needs(self):
        self.assert_compiles()
        self.assert_allowed('qorext_client', NEEDS)

    def test_the_parent_may_start_and_signal_the_daemon_and_nothing_else(self):
        self.assert_compiles()
        self.assert_allowed('rild', PARENT)

    def test_the_daemon_enters_its_domain_when_the_parent_starts_it(self):
        self.assert_compiles()
        transitions = run('sesearch', '-T', '-s', 'rild', '-c', 'process', self.policy())
        self.assertEqual(transitions.stdout,
                         'type_transition rild qorext_client_exec:process qorext_client;\n')

    def test_only_the_telephony_hal_may_set_the_radio_properties(self):
        self.assert_never_allowed('qorext_client radio_prop',
                                  'set_prop(qorext_client, radio_prop)\n')

    def test_the_telephony_process_shell_and_bug_reports_read_the_modem_facts(self):
        self.assert_compiles()
        for reader in ('radio', 'shell', 'dumpstate'):
            self.assertEqual(self.allowed('-s', reader, '-t', 'qorext_prop'),
                             {('qorext_prop', 'file'): {'getattr', 'map', 'open', 'read'}})

    def test_the_policy_lets_a_vendor_process_call_the_dropbox_service(self):
        self.assert_compiles(dropbox_rules(MANUAL))

    def test_the_policy_lets_the_parent_confine_the_daemon_to_its_system_calls(self):
        self.assert_compiles(confinement_rules(MANUAL))
        self.assertEqual(self.allowed('-s', 'rild', '-c', 'process2'),
                         {('qorext_client', 'process2'): {'nnp_transition'}})

    def test_logs_directly_below_data_are_refused(self):
        self.assert_never_allowed('qorext_client system_data_file',
                                  'allow qorext_client system_data_file:dir rw_dir_perms;\n')

    def test_the_file_contexts_name_types_of_the_policy(self):
        self.assert_compiles()
        self.assert_valid(self.file_contexts())

    def test_a_context_of_an_unknown_type_is_reported(self):
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

    def test_every_path_of_the_daemon_has_a_type(self):
        paths = product_literals(PHONE_PATH)
        self.assertEqual(len(paths), 6)
        self.assertLessEqual(paths, set(TYPE_OF_PATH) | set(TYPE_OF_KERNEL_FILE))

    def test_every_property_of_the_daemon_has_a_type_that_it_may_use(self):
        properties = product_literals(PROPERTY)
        self.assertEqual(properties, set(TYPE_OF_PROPERTY))
        labels = rows(PLATFORM / 'property_contexts')[1:] + rows(PROPERTY_CONTEXTS)
        for name, kind in TYPE_OF_PROPERTY.items():
            self.assertEqual(property_label(labels, name), kind)
            need = ('property_service', 'set') if name.startswith('ril.') else ('file', 'read')
            self.assertIn(need[1], NEEDS[kind, need[0]].split(), name)

    def test_the_manual_names_every_path_property_and_type(self):
        names = product_literals(PHONE_PATH) | product_literals(PROPERTY)
        names |= set(re.findall(r'^type (\w+)', RULES.read_text(), re.M))
        self.assertEqual([name for name in sorted(names) if f'`{name}`' not in MANUAL], [])

    def test_the_manual_lists_the_rules_of_the_domain(self):
        self.assertEqual(documented_rules(MANUAL),
                         {use: set(permissions.split()) for use, permissions in NEEDS.items()})

    def test_the_property_contexts_name_types_of_the_policy(self):
        self.assert_compiles()
        as_files = self.folder / 'property_contexts'
        as_files.write_text(''.join(f'/{name} {context}\n'
                                    for name, context, *_ in rows(PROPERTY_CONTEXTS)))
        self.assert_valid(as_files)


if __name__ == '__main__':
    unittest.main()
