# SPDX-License-Identifier: Apache-2.0
"""The daemon's policy compiles with a release's, neverallow rules on, and labels what it opens."""
import collections
import re
import subprocess

from tree import ROOT

SEPOLICY = ROOT / 'platform/android/sepolicy'
VARIANTS = ('user', 'userdebug', 'eng')
# In the order in which the phone's build puts them together.
HEAD = ('flagging_macros security_classes initial_sids access_vectors global_macros '
        'neverallow_macros mls_macros mls_decl mls policy_capabilities te_macros ioctl_defines '
        'ioctl_macros attributes').split()
TAIL = 'roles_decl roles users initial_sid_contexts fs_use genfs_contexts'.split()
DEFINITIONS = {
    'mls_num_sens': 1, 'mls_num_cats': 1024, 'target_arch': 'arm64',
    'target_with_asan': 'false', 'target_with_dexpreopt': 'false',
    'target_with_native_coverage': 'false', 'target_full_treble': 'true',
    'target_compatible_property': 'true', 'target_treble_sysprop_neverallow': 'true',
    'target_enforce_sysprop_owner': 'true', 'target_exclude_build_test': 'false',
    'target_requires_insecure_execmem_for_swiftshader': 'false',
    'target_enforce_debugfs_restriction': 'true', 'target_recovery': 'false',
    'target_board_api_level': 1000000,
}

ALLOW = re.compile(r'^allow \w+ (\w+):(\w+) (?:{ (.*) }|(\w+));$', re.M)


def run(*words):
    return subprocess.run([str(word) for word in words], check=False, capture_output=True,
                          text=True)


class Compiled:
    """A release's policy with the daemon's, for one kind of build."""

    def __init__(self, platform, variant, folder):
        self.platform, self.variant = platform.folder, variant
        self.binary = folder / 'policy'
        self.folder = folder

    def parts(self, *names):
        return [self.platform / part / name for name in names
                for part in ('flagging', 'public', 'private', 'vendor')
                if (self.platform / part / name).exists()]

    def sources(self, more):
        rules = [file for part in ('public', 'private', 'vendor')
                 for file in sorted((self.platform / part).glob('*.te'))]
        return [*self.parts(*HEAD), *rules, *sorted(SEPOLICY.glob('*public*/*.te')),
                *sorted(SEPOLICY.glob('*private*/*.te')), *sorted(SEPOLICY.glob('vendor/*.te')),
                more, *self.parts(*TAIL), *SEPOLICY.glob('vendor/genfs_contexts'),
                *self.parts('port_contexts')]

    def flags(self):
        """Every flag that the release's own policy asks for is on."""
        text = ''.join(file.read_text() for file in self.platform.rglob('*') if file.is_file())
        asked = set(re.findall(r'is_flag_(?:enabled|disabled)\(`?(RELEASE_[A-Z_]+)', text))
        return {f'target_flag_{flag}': 'true' for flag in asked}

    def expand(self, files):
        values = DEFINITIONS | self.flags() | {'target_build_variant': self.variant}
        return run('m4', '--fatal-warnings', *(f'-D{name}={value}' for name, value in
                                               values.items()), '-s', *files)

    def compile(self, more=''):
        """What is wrong with the policy and `more` rules; nothing if they compile."""
        extra = self.folder / 'more.te'
        extra.write_text(more)
        expanded = self.expand(self.sources(extra))
        if expanded.returncode:
            return [expanded.stderr]
        source = self.folder / 'policy.conf'
        source.write_text(expanded.stdout)
        done = run('checkpolicy', '-M', '-c', '30', '-o', self.binary, source)
        return [done.stderr] if done.returncode else []

    def contexts(self, name):
        """The labels of one kind, the platform's and the daemon's, in one file."""
        files = [*self.parts(name), *sorted(SEPOLICY.glob(f'*/{name}'))]
        both = self.folder / name
        macros = sorted((self.platform / 'flagging').glob('*_macros'))
        both.write_text(self.expand([*macros, *files]).stdout)
        return both

    def allowed(self, domain):
        """(target, class) to permissions."""
        found = run('sesearch', '-A', '-s', domain, '-ds', self.binary).stdout
        rules = collections.defaultdict(set)
        for target, kind, many, one in ALLOW.findall(found):
            rules[target, kind] |= set((many or one).split())
        return rules


def rows(path):
    lines = (line.split('#')[0].split() for line in path.read_text().splitlines())
    return [words for words in lines if words]


def is_exact(row):
    return len(row) > 2 and row[2] == 'exact'


def doubled(labels):
    """Names that have a label twice: an exact one and a prefix are two names."""
    seen = collections.Counter((row[0], is_exact(row)) for row in labels)
    return sorted(name for (name, _), count in seen.items() if count > 1)


def property_label(labels, name):
    """The type of a property: its own label, or that of the longest prefix."""
    matching = [row for row in labels
                if row[0] == name or not is_exact(row) and name.startswith(row[0].rstrip('*'))]
    row = max(matching, key=lambda row: (is_exact(row), len(row[0])))
    return row[1].split(':')[2]


def file_label(contexts, path):
    found = run('selabel_lookup', '-b', 'file', '-f', contexts, '-k', path).stdout
    context = found.split()[-1:] or ['']
    return context[0].split(':')[2] if ':' in context[0] else 'no label'
