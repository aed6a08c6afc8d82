# SPDX-License-Identifier: Apache-2.0
"""What ./dev phone would report about a tree that lacks something."""
import pathlib
import tempfile
import unittest

import sources
from blueprint import blueprint_errors, missing_modules
from init_script import script_errors
from policy import doubled, property_label
from support import COMPILER, ROOT, run
from tree import Headers, headers_of, policies_of

HERE = pathlib.Path(__file__).resolve().parent


class Image(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)

    def write(self, name, text=''):
        file = self.tree / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def test_a_folder_without_material_is_an_error(self):
        checked = run(HERE / 'check_tree', self.tree)
        self.assertEqual(checked.returncode, 2)
        self.assertIn('neither bionic nor an SELinux policy', checked.stderr)

    def test_a_source_tree_is_one_release(self):
        for name in ('bionic/libc/include/x.h', 'external/libcxx/include/x',
                     'system/sepolicy/public/x.te'):
            self.write(name)
        self.assertEqual([each.name for each in headers_of(self.tree)],
                         ['bionic tree, libc++ tree', 'bionic tree, libc++ host'])
        self.assertEqual([each.name for each in policies_of(self.tree)], ['tree'])

    def test_parts_of_several_releases_are_combined(self):
        for name in ('bionic/13/libc/x', 'bionic/15/libc/x', 'libcxx/14/include/x',
                     'sepolicy/12/public/x', 'sepolicy/9/public/x'):
            self.write(name)
        self.assertEqual(len(headers_of(self.tree)), 4)
        self.assertEqual([each.name for each in policies_of(self.tree)], ['9', '12'])

    def test_a_name_with_two_labels_is_reported(self):
        labels = [['ril.', 'u:object_r:a:s0'], ['ro.x', 'u:object_r:a:s0', 'exact', 'string'],
                  ['ro.x', 'u:object_r:b:s0', 'exact', 'int'], ['ro.x', 'u:object_r:c:s0']]
        self.assertEqual(doubled(labels), ['ro.x'])

    def test_the_longest_prefix_labels_a_property(self):
        labels = [['*', 'u:object_r:any:s0'], ['ril.', 'u:object_r:radio:s0'],
                  ['ril.x.', 'u:object_r:own:s0'], ['ril.y', 'u:object_r:y:s0', 'exact', 'string']]
        found = [property_label(labels, name) for name in ('ril.x.1', 'ril.y', 'ril.yz', 'a')]
        self.assertEqual(found, ['own', 'y', 'radio', 'any'])

    def test_a_module_that_the_tree_lacks_is_reported(self):
        self.write('build/soong/Android.bp', 'cc_library {\n    name: "liblog",\n}\n')
        missing = missing_modules(self.tree)
        self.assertIn(f'no module libqmi_cci in {self.tree}', missing)
        self.assertNotIn(f'no module liblog in {self.tree}', missing)

    def test_stubs_replace_the_modules_of_vendors(self):
        self.write('build/soong/Android.bp', 'cc_library {\n    name: "liblog",\n}\n')
        missing = missing_modules(self.tree, ['stubs'])
        self.assertNotIn(f'no module libqmi_cci in {self.tree}', missing)
        self.assertIn(f'no module libcutils in {self.tree}', missing)
        self.assertNotIn(f'no module fmtlib in {self.tree}', missing)
        self.assertIn(f'no module fmtlib in {self.tree}',
                      missing_modules(self.tree, ['modem', 'stubs']))

    def test_a_source_that_does_not_compile_is_reported(self):
        self.write('good.cpp', 'int a;\n')
        self.write('bad.cpp', 'int a\n')
        messages = [sources.compile_one([COMPILER, '-fsyntax-only', self.tree / name])
                    for name in ('good.cpp', 'bad.cpp')]
        self.assertEqual(messages[0], '')
        self.assertIn('bad.cpp:1', messages[1])

    def command(self, name, check):
        modules, names = sources.CHECKS[check]
        self.assertIn(name, names)
        headers = Headers('none', self.tree, self.tree, self.tree / 'log', self.tree / 'cutils')
        return sources.command(modules, name, headers, [], 'vendor')

    def test_the_daemon_is_compiled_with_the_headers_of_vendor_or_stubs(self):
        daemon = self.command('qorext_client', 'daemon')
        self.assertIn('-Wconversion', daemon)
        self.assertIn('-fno-rtti', daemon)
        for folder in (ROOT / 'platform/android/include', self.tree / 'cutils', 'vendor'):
            self.assertIn(folder, daemon)
        self.assertNotIn(ROOT / 'platform/include', daemon)
        with_stubs = self.command('qorext_client', 'stubs')
        self.assertNotIn('vendor', with_stubs)
        self.assertIn(ROOT / 'platform/include', with_stubs)

    def test_stubs_are_compiled_with_exceptions_and_rtti(self):
        stub = self.command('libqorext_stub_qmi_cci', 'stubs')
        self.assertIn('-frtti', stub)
        self.assertGreater(stub.index('-fexceptions'), stub.index('-fno-exceptions'))
        self.assertIn('-Wno-sign-conversion', stub)

    def test_the_blueprint_has_no_errors(self):
        self.assertEqual(blueprint_errors(), [])

    def test_a_command_that_init_lacks_is_reported(self):
        self.assertEqual(script_errors(self.tree), [])
        self.write('system/core/init/builtins.cpp',
                   '        {"mkdir",                   {1,     6,    {true,   do_mkdir}}},\n')
        self.assertEqual(script_errors(self.tree),
                         ['qorext_client.rc: symlink /data/vendor/vorn /data/vorn'])


if __name__ == '__main__':
    unittest.main()
