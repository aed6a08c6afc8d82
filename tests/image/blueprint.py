# SPDX-License-Identifier: Apache-2.0
"""Android.bp is formatted as the phone's build formats it, and names modules that the tree has."""
import re
import subprocess

from support import BLUEPRINT, run

# Modules of the phone that Android.bp names.
REFERENCE = re.compile(r'\b(?:header_libs|shared_libs): \[(.*?)\]', re.S)


def blueprint_errors():
    done = run('bpfmt', '-s', '-d', BLUEPRINT)
    return [done.stdout + done.stderr] if done.returncode or done.stdout else []


def module_names(text):
    return set(re.findall(r'\bname: "([^"]+)"', text))


def missing_modules(tree):
    """Modules that a source tree lacks. (A folder of parts has none: nothing to compare with.)"""
    if not (tree / 'build/soong').is_dir():
        return []
    listed = subprocess.run(['grep', '-rhE', '--include=Android.bp', r'^ *name: "', tree],
                            check=False, capture_output=True, text=True)
    there = module_names(listed.stdout)
    named = {name for names in REFERENCE.findall(BLUEPRINT.read_text())
             for name in re.findall(r'"([^"]+)"', names)}
    return [f'no module {name} in {tree}' for name in sorted(named - there)]
