# SPDX-License-Identifier: Apache-2.0
"""Android.bp builds the same daemon as CMake."""
import json
import re
import shlex
import tempfile
import unittest

from support import ANDROID, BLUEPRINT, BUILD, COMPILER, ROOT, module, run

# Libraries of the toolchain, which the image's build adds itself.
TOOLCHAIN = re.compile(r'lib(stdc\+\+|c\+\+|c\+\+abi|m|c|gcc_s|asan|ubsan|tsan|gcov)\.so|ld-linux')
SHARED_FLAG = re.compile(r'-(W[a-z]|std=|fno-exceptions|fno-rtti|D_GNU_SOURCE)')


def cmake_compiles():
    """Returns the command line for each source of the daemon."""
    entries = json.loads((BUILD / 'compile_commands.json').read_text())
    commands = ((entry, shlex.split(entry['command'])) for entry in entries)
    return {entry['file'].removeprefix(f'{ROOT}/'): words for entry, words in commands
            if words[words.index('-o') + 1].startswith('src/')}


class Image(unittest.TestCase):
    def setUp(self):
        self.daemon = module('cc_binary', 'qorext_client')

    def test_the_blueprint_is_well_formed_and_formatted(self):
        listed = run('bpfmt', '-s', '-l', BLUEPRINT)
        self.assertEqual((listed.returncode, listed.stdout, listed.stderr), (0, '', ''))
        difference = run('bpfmt', '-s', '-d', BLUEPRINT)
        self.assertEqual((difference.returncode, difference.stdout), (0, ''))

    def test_a_malformed_blueprint_is_reported(self):
        with tempfile.NamedTemporaryFile('w', suffix='.bp') as broken:
            broken.write(BLUEPRINT.read_text().replace('vendor: true,', 'vendor true,', 1))
            broken.flush()
            self.assertNotEqual(run('bpfmt', '-l', broken.name).returncode, 0)

    def test_the_image_builds_the_sources_that_cmake_builds(self):
        self.assertIn('src/host/main.cpp', self.daemon['srcs'])
        self.assertEqual(self.daemon['srcs'], sorted(cmake_compiles()))

    def test_the_image_compiles_with_the_flags_of_cmake(self):
        flags = sorted(self.daemon['cflags'] + self.daemon['cppflags'] +
                       ['-std=' + self.daemon['cpp_std'][0]])
        for source, words in cmake_compiles().items():
            self.assertEqual(flags, sorted(filter(SHARED_FLAG.match, words)), source)

    def test_the_image_links_the_libraries_that_the_daemon_links(self):
        dynamic = run('readelf', '-d', BUILD / 'bin/qorext_client').stdout
        needed = re.findall(r'\(NEEDED\).*\[(.*)\]', dynamic)
        names = sorted(name.split('.so')[0] for name in needed if not TOOLCHAIN.match(name))
        self.assertEqual(self.daemon['shared_libs'], names)

    def test_the_daemon_is_a_vendor_binary(self):
        self.assertEqual(self.daemon['vendor'], 'true')

    def test_the_other_files_of_the_image_are_in_the_blueprint(self):
        files = {path.name: str(path.relative_to(ROOT)) for path in ANDROID.glob('init/*')}
        self.assertEqual(self.daemon['required'], sorted(files))
        for name, path in files.items():
            self.assertEqual(module('prebuilt_etc', name)['src'], [path])

    def test_the_sources_compile_with_the_phone_paths_of_the_image(self):
        folders = [ROOT / folder for folder in self.daemon['local_include_dirs']]
        includes = [f'-I{folder}' for folder in [*folders, ROOT / 'platform/include']]
        sources = [ROOT / source for source in self.daemon['srcs']
                   if '"phone_path.h"' in (ROOT / source).read_text()]
        self.assertTrue(sources)
        compiled = run(COMPILER, '-fsyntax-only', '-std=' + self.daemon['cpp_std'][0],
                       *self.daemon['cflags'], *self.daemon['cppflags'], *includes,
                       '-isystem', '/usr/include/android', *sources)
        self.assertEqual((compiled.returncode, compiled.stderr), (0, ''))


if __name__ == '__main__':
    unittest.main()
