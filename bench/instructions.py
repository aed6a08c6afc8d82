# SPDX-License-Identifier: Apache-2.0
"""Instructions that the daemon's process executes for a request, counted by callgrind.

bench/instructions.json stores those of the code built here, the executable and its platform
libraries; check() compares with them. The C library's count for a log line depends on the machine,
the time of day and the process id.
"""

import collections
import json
import re
import sys

import tracers
from places import BUILD, DAEMON, NAMES, ROOT, row

STORED = ROOT / "bench/instructions.json"
TOLERANCE = 0.03
TOOL = "--tool=callgrind --quiet --callgrind-out-file={out}"

OBJECT = re.compile(r"^ob=\((\d+)\)(?: (.*))?$")
COST = re.compile(r"^[\d+*-]\S* (\d+)$")


def by_object(text):
    """Counts instructions by executable or library, each without its callees, and in total."""
    names, costs = {}, collections.Counter()
    current, is_call = None, False
    for line in text.splitlines():
        if match := OBJECT.match(line):
            names.setdefault(match[1], (match[2] or "").rsplit("/", 1)[-1])
            current = names[match[1]]
        elif match := re.match(r"^cob=\((\d+)\) (.*)$", line):
            names.setdefault(match[1], match[2].rsplit("/", 1)[-1])
        elif match := COST.match(line):
            if not is_call:
                costs[current] += int(match[1])
        is_call = line.startswith("calls=")
    costs["total"] = int(re.search(r"^summary: (\d+)", text, re.MULTILINE)[1])
    return costs


def built(found):
    """Sums the counts of the objects of this build."""
    names = {path.name for path in (BUILD / "lib").iterdir()} | {DAEMON.name}
    return sum(count for name, count in found.items() if name in names)


def run():
    return {name: tracers.per_request(TOOL, name, by_object) for name in NAMES}


def rows(result):
    table = []
    for name, what in NAMES.items():
        found = result[name]
        table += [row(f"{what}: instructions of the process", found["total"]),
                  row(f"{what}: of these in the code built here", built(found)),
                  row(f"{what}: of these in the executable itself", found.get(DAEMON.name, 0))]
    return table


def counts():
    return {name: round(built(found)) for name, found in run().items()}


def store():
    STORED.write_text(json.dumps(counts(), indent=2) + "\n")


def check():
    stored, found = json.loads(STORED.read_text()), counts()
    print(f"{'request':<10} {'stored':>9} {'now':>9}")
    changed = []
    for name, count in found.items():
        change = count / stored[name] - 1
        print(f"{name:<10} {stored[name]:>9} {count:>9}  {change:+.2%}")
        if abs(change) > TOLERANCE:
            changed.append(name)
    if changed:
        sys.exit(f"bench: not within {TOLERANCE:.0%} of bench/instructions.json: {' '.join(changed)}; "
                 "if the change is deliberate: ./dev bench --store")
