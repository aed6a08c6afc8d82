# SPDX-License-Identifier: Apache-2.0
"""The blueprints are formatted as the phone's build formats them, and name modules that the tree has."""
import re
import subprocess

from modules import Modules
from support import BLUEPRINT, run


def blueprint_errors():
    errors = []
    for file in Modules(BLUEPRINT).files:
        done = run('bpfmt', '-s', '-d', file)
        errors += [done.stdout + done.stderr] if done.returncode or done.stdout else []
    return errors


def module_names(text):
    return set(re.findall(r'\bname: "([^"]+)"', text))


def missing_modules(tree, enabled=()):
    """Modules that a source tree lacks. (A folder of parts has none: nothing to compare with.)"""
    if not (tree / 'build/soong').is_dir():
        return []
    listed = subprocess.run(['grep', '-rhE', '--include=*.bp', r'^ *name: "', tree],
                            check=False, capture_output=True, text=True)
    own = Modules(BLUEPRINT, enabled)
    there = module_names(listed.stdout) | set(own)
    named = {library for name in own
             if own.kind(name).startswith('cc_') and own.kind(name) != 'cc_defaults' and
             own.is_built(name) for library in own.libraries(name)}
    return [f'no module {name} in {tree}' for name in sorted(named - there)]
