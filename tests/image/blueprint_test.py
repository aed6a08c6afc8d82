# SPDX-License-Identifier: Apache-2.0
"""The blueprints build the same programs, libraries and tests as CMake."""
import json
import pathlib
import re
import tempfile
import unittest

from cmake import cmake_targets, cmake_wraps
from modules import Modules
from support import ANDROID, BLUEPRINT, BUILD, COMPILER, ROOT, run

# Libraries of the toolchain, which the image's build adds itself.
TOOLCHAIN = re.compile(r'lib(stdc\+\+|c\+\+|c\+\+abi|m|c|gcc_s|asan|ubsan|tsan|gcov)\.so|ld-linux')
SHARED_FLAG = re.compile(r'-(W[a-z]|std=|fno-exceptions|fno-rtti|D_GNU_SOURCE)')
CMAKE = (ROOT / 'CMakeLists.txt').read_text()
PLATFORM = (ROOT / 'platform/linux/CMakeLists.txt').read_text()
PRESETS = {preset['name']: preset.get('cacheVariables', {}) for preset in
           json.loads((ROOT / 'CMakePresets.json').read_text())['configurePresets']}

# Each module with the targets of CMake that compile the same sources.
STUBS = {
    'libqorext_stub_nativedropbox': ['nativedropbox'],
    'libqorext_stub_qmi_cci': ['qmi_cci'],
    'libqorext_stub_qmi_idl': ['qmi_idl'],
    'libqorext_stub_qmi_transport': ['qmi_transport'],
    'libqorext_stub_qmiqorext': ['qmiqorext'],
    'libqorext_stub_qmiservices': ['qmiservices'],
}
PARENT = {'qorext_parent': ['qorext_parent']}
MODEM = {'qorext_modem': ['command_completion', 'modem_core', 'modem_messages', 'modem_state',
                          'protocol', 'qmi_idl_json', 'qorext_modem']}
TESTS = {
    'libqorext_client_main': ['qorext_client'],
    'libqorext_product': ['phone_path', 'qorext_product'],
    'qorext_parent_test': ['parent_test'],
    'qorext_product_test': ['product_test'],
}
DAEMON = {'qorext_client': ['qorext_client', 'qorext_product']}
# What the stubs replace because the platform lacks the library that it calls.
REPLACED = {
    'platform/android/stubs/dropbox.cpp': ['platform/linux/dropbox/dropbox.cpp'],
    'platform/android/stubs/memory.cpp': ['platform/linux/qmi_cci/memory.cpp'],
    'platform/android/stubs/no_qrtr.cpp': [
        f'platform/linux/qmi_transport/qrtr_{part}.cpp' for part in ('client', 'server', 'socket')],
}
# A program of tests compiles main() itself; the modules have a library for it.
IN_LIBRARY = {'qorext_product_test': ['src/host/main.cpp']}
# The size of a span is signed in a phone's C++ library.
ADDED_FLAGS = {'-Wno-sign-compare', '-Wno-sign-conversion'}
ALL = ('modem', 'stubs')


def wrap_differences(modules):
    """The functions that one of CMake and a module of tests replaces, of modules that differ."""
    differences = {
        name: cmake_wraps(ROOT / folder / 'CMakeLists.txt') ^ set(modules.properties(name)['ldflags'])
        for name, folder in (('qorext_product_test', 'tests/unit/product'),
                             ('qorext_parent_test', 'tests/unit/parent'))}
    return {name: wraps for name, wraps in differences.items() if wraps}


class Image(unittest.TestCase):
    def setUp(self):
        self.modules = Modules(BLUEPRINT)
        self.with_stubs = Modules(BLUEPRINT, ALL)
        self.daemon = self.modules.properties('qorext_client')
        self.targets = cmake_targets()

    def expected_sources(self, name, targets):
        """Those of CMake's targets, with what the stubs replace."""
        sources = set().union(*(self.targets[target][0] for target in targets))
        for stub, replaced in REPLACED.items():
            if sources.issuperset(replaced):
                sources = sources.difference(replaced) | {stub}
        return sorted(sources.difference(IN_LIBRARY.get(name, [])))

    def source_differences(self, modules):
        return [name for name, targets in (DAEMON | STUBS | PARENT | MODEM | TESTS).items()
                if modules.sources(name) != self.expected_sources(name, targets)]

    def flag_differences(self, modules):
        """The flags by which a module differs from CMake's targets, of modules that differ."""
        differences = {}
        for name, targets in (DAEMON | STUBS | PARENT | MODEM).items():
            flags = set(filter(SHARED_FLAG.match, modules.flags(name)))
            added = ADDED_FLAGS if name not in DAEMON else set()
            for words in (words for target in targets for words in self.targets[target][1]):
                shared = set(filter(SHARED_FLAG.match, words)) - {'-Winvalid-pch'}
                if flags ^ shared ^ added:
                    differences[name] = flags ^ shared ^ added
        return differences

    def edited(self, old, new, file=BLUEPRINT):
        """The modules with a change in one blueprint; their sources are those of the repository."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        copies = {path: pathlib.Path(folder.name, path.name) for path in self.modules.files}
        for path, copy in copies.items():
            copy.write_text(path.read_text())
        copies[file].write_text(file.read_text().replace(old, new))
        self.assertNotEqual(copies[file].read_text(), file.read_text())
        modules = Modules(copies[BLUEPRINT], ALL)
        modules.root = ROOT
        return modules

    def test_the_blueprints_are_well_formed_and_formatted(self):
        self.assertEqual(len(self.modules.files), 3)
        for file in self.modules.files:
            listed = run('bpfmt', '-s', '-l', file)
            self.assertEqual((listed.returncode, listed.stdout, listed.stderr), (0, '', ''))
            difference = run('bpfmt', '-s', '-d', file)
            self.assertEqual((difference.returncode, difference.stdout), (0, ''))

    def test_a_malformed_blueprint_is_reported(self):
        with tempfile.NamedTemporaryFile('w', suffix='.bp') as broken:
            broken.write(BLUEPRINT.read_text().replace('vendor: true,', 'vendor true,', 1))
            broken.flush()
            self.assertNotEqual(run('bpfmt', '-l', broken.name).returncode, 0)
        with self.assertRaisesRegex(ValueError, 'true: expected :'):
            self.edited('vendor: true,', 'vendor true,')

    def test_two_modules_with_one_name_are_reported(self):
        with self.assertRaisesRegex(ValueError, 'two modules have one name'):
            self.edited('name: "libqorext_stub_qmi_idl"', 'name: "qorext_client"', ROOT / 'Stubs.bp')

    def test_modules_build_the_sources_that_cmake_builds(self):
        self.assertIn('src/host/main.cpp', self.daemon['srcs'])
        self.assertEqual(self.source_differences(self.modules), [])

    def test_a_source_that_a_module_lacks_is_reported(self):
        without_rde = self.edited('        "src/carrier_modem/rde.cpp",\n', '')
        self.assertEqual(self.source_differences(without_rde), ['qorext_client'])
        with_qrtr = self.edited('qmi_transport/qrtr_*.cpp', 'qmi_transport/none.cpp',
                                ROOT / 'Stubs.bp')
        self.assertEqual(self.source_differences(with_qrtr), ['libqorext_stub_qmi_transport'])

    def test_modules_compile_with_the_flags_of_cmake(self):
        self.assertEqual(self.flag_differences(self.modules), {})

    def test_a_flag_that_a_module_lacks_is_reported(self):
        without_rtti_flag = self.edited('        "-fno-rtti",\n', '')
        self.assertEqual(self.flag_differences(without_rtti_flag),
                         {'qorext_client': {'-fno-rtti'}})
        unshadowed = self.edited('        "-Wshadow",\n', '', ROOT / 'Stubs.bp')
        self.assertEqual(self.flag_differences(unshadowed),
                         dict.fromkeys(STUBS | PARENT | MODEM, {'-Wshadow'}))

    def test_the_modem_has_the_version_of_cmake(self):
        version = re.search(r'project\(qorext VERSION ([\d.]+)', CMAKE)[1]
        self.assertIn(f'-DQOREXT_VERSION="{version}"', self.modules.flags('qorext_modem'))

    def test_indirect_calls_of_the_daemon_are_checked_as_in_the_clang_build(self):
        built = (ROOT / 'src/CMakeLists.txt').read_text()
        checked = set(re.findall(r'check_indirect_calls\((\w+)\)', built))
        hardening = (ROOT / 'cmake/hardening.cmake').read_text()
        kinds = set(re.findall(r'-fsanitize=([\w,-]+)', hardening))
        self.assertEqual(PRESETS['clang']['QOREXT_CFI'], 'ON')
        self.assertEqual(checked, set(DAEMON['qorext_client']))
        self.assertEqual(self.daemon['sanitize'], dict.fromkeys(kinds, True))

    def test_stubs_export_what_the_workstation_libraries_export(self):
        scripts = dict(re.findall(r'add_phone_library\((\w+) EXPORTS (\S+)', PLATFORM))
        for name, [target] in STUBS.items():
            entry = self.modules.properties(name)
            script = f'platform/linux/{scripts[target]}' if target in scripts else None
            self.assertEqual(entry.get('version_script'), script)
            if self.modules.kind(name) == 'cc_library_shared':
                self.assertEqual(entry['stem'], f'lib{target}')

    def test_tests_replace_the_functions_that_cmake_replaces(self):
        self.assertEqual(wrap_differences(self.modules), {})
        without_fork = self.edited('        "-Wl,--wrap=fork",\n', '', ROOT / 'Tests.bp')
        self.assertEqual(wrap_differences(without_fork),
                         {'qorext_parent_test': {'-Wl,--wrap=fork'}})
        self.assertIn('-Dmain=qorext_client_main', self.modules.flags('libqorext_client_main'))
        self.assertIn('COMPILE_DEFINITIONS main=qorext_client_main',
                      (ROOT / 'tests/unit/product/CMakeLists.txt').read_text())

    def test_the_image_links_the_libraries_that_the_daemon_links(self):
        dynamic = run('readelf', '-d', BUILD / 'bin/qorext_client').stdout
        needed = re.findall(r'\(NEEDED\).*\[(.*)\]', dynamic)
        names = sorted(name.split('.so')[0] for name in needed if not TOOLCHAIN.match(name))
        self.assertEqual(sorted(self.daemon['shared_libs']), names)
        stubs = self.with_stubs.properties('qorext_client')['shared_libs']
        self.assertEqual(sorted(self.with_stubs.properties(name).get('stem', name)
                                if name in STUBS else name for name in stubs), names)

    def test_stubs_parent_and_modem_are_built_only_on_request(self):
        with_stubs = STUBS | PARENT
        for enabled, built in (((), {}), (('stubs',), with_stubs), (ALL, with_stubs | MODEM)):
            modules = Modules(BLUEPRINT, enabled)
            self.assertEqual({name for name in with_stubs | MODEM if modules.is_built(name)},
                             set(built))
            self.assertTrue(all(map(modules.is_built, DAEMON | TESTS)))

    def test_programs_of_the_image_are_vendor_modules_of_64_bits(self):
        for name in DAEMON | STUBS | PARENT | MODEM:
            entry = self.modules.properties(name)
            self.assertIs(entry['vendor'], True, name)
            self.assertEqual(entry['compile_multilib'], '64', name)

    def test_the_manual_names_the_modules_that_the_modem_needs(self):
        manual = (ROOT / 'docs/phone.md').read_text()
        table = manual.split('\n## On a tree without vendor parts\n')[1].split('\n### ')[0]
        added = self.modules.libraries('qorext_modem').difference(self.modules)
        self.assertEqual(set(re.findall(r'^\| `(lib\w+_headers)`', table, re.M)) | {'fmtlib'}, added)
        self.assertIn("the platform's `fmtlib`", table)

    def test_presubmit_runs_the_unit_tests_on_the_host(self):
        mapping = json.loads((ROOT / 'TEST_MAPPING').read_text())
        tests = {name for name in self.modules if self.modules.kind(name) == 'cc_test_host'}
        self.assertEqual({entry['name'] for entry in mapping['presubmit']}, tests)
        self.assertTrue(all(entry['host'] for entry in mapping['presubmit']))

    def test_the_other_files_of_the_image_are_in_the_blueprint(self):
        files = {path.name: str(path.relative_to(ROOT)) for path in ANDROID.glob('init/*')}
        self.assertEqual(self.daemon['required'], sorted(files))
        for name, path in files.items():
            self.assertEqual(self.modules.kind(name), 'prebuilt_etc')
            self.assertEqual(self.modules.properties(name)['src'], path)

    def test_the_sources_compile_with_the_phone_paths_of_the_image(self):
        folders = [ROOT / folder for folder in self.daemon['local_include_dirs']]
        includes = [f'-I{folder}' for folder in [*folders, ROOT / 'platform/include']]
        sources = [ROOT / source for source in self.daemon['srcs']
                   if '"phone_path.h"' in (ROOT / source).read_text()]
        self.assertTrue(sources)
        compiled = run(COMPILER, '-fsyntax-only', *self.modules.flags('qorext_client'), *includes,
                       '-isystem', '/usr/include/android', *sources)
        self.assertEqual((compiled.returncode, compiled.stderr), (0, ''))


if __name__ == '__main__':
    unittest.main()
