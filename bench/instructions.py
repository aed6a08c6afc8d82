"""Instructions that the daemon's process executes for a request, counted by callgrind.

The count of one request is the difference of two runs with different numbers of requests, so that
start and end are not in it. bench/instructions.json keeps the counts; check() compares with them.
"""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from places import DAEMON, ROOT, bench_program, row
from latency import NAMES

STORED = ROOT / "bench/instructions.json"
TOLERANCE = 0.03
FEW, MANY = 20, 120

WRAPPER = """#!/bin/sh
exec valgrind --tool=callgrind --vgdb=no --quiet --callgrind-out-file={out} {daemon} "$@"
"""


def total(name, requests):
    with tempfile.TemporaryDirectory() as folder:
        # The daemon writes the counts when it has become the radio user.
        Path(folder).chmod(0o777)
        out, wrapper = Path(folder, "counts"), Path(folder, "daemon")
        wrapper.write_text(WRAPPER.format(out=out, daemon=DAEMON))
        wrapper.chmod(0o755)
        subprocess.run([bench_program("bench_latency"), "repeat", str(wrapper), name,
                        str(requests)], check=True)
        return int(re.search(r"^(?:summary|totals): (\d+)", out.read_text(), re.MULTILINE)[1])


def per_request(name):
    return round((total(name, MANY) - total(name, FEW)) / (MANY - FEW))


def run():
    return {name: per_request(name) for name in NAMES}


def rows(result):
    return [row(f"{what}: instructions", result[name]) for name, what in NAMES.items()]


def store():
    STORED.write_text(json.dumps(run(), indent=2) + "\n")


def check():
    """Fails when a request has become more than the tolerance dearer, or cheaper without a store."""
    stored, found = json.loads(STORED.read_text()), run()
    print(f"{'request':<10} {'stored':>9} {'now':>9}")
    off = []
    for name, count in found.items():
        change = count / stored[name] - 1
        print(f"{name:<10} {stored[name]:>9} {count:>9}  {change:+.2%}")
        if abs(change) > TOLERANCE:
            off.append(name)
    if off:
        sys.exit(f"bench: not within {TOLERANCE:.0%} of bench/instructions.json: {' '.join(off)}; "
                 "if that is meant: ./dev bench --store")
