#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks of the release build. Prints a table; writes build/bench/results.json and
latency.svg.

usage: bench/run.py [NAME...]    without a name all but qrtr
       bench/run.py --check      compares the instructions of each request with the stored ones
       bench/run.py --store      stores them in bench/instructions.json
"""

import json
import sys

import instructions
from measures import MEASURES, ONLY_BY_NAME
from places import RESULTS
from plot import picture


def earlier_results():
    return json.loads(RESULTS.read_text()) if RESULTS.exists() else {}


def print_table(rows):
    width = max(len(row["what"]) for row in rows)
    for row in rows:
        goal = f"  goal: {row['goal']}" if row.get("goal") else ""
        print(f"{row['what']:<{width}}  {row['value']:>10.4g} {row['unit']}{goal}")


def main(names):
    unknown = set(names) - set(MEASURES)
    if unknown:
        sys.exit(f"bench: unknown benchmark: {' '.join(sorted(unknown))}; "
                 f"expected: {' '.join(MEASURES)}")
    results = earlier_results()
    for name in names or [name for name in MEASURES if name not in ONLY_BY_NAME]:
        print(f"{name} ...", file=sys.stderr, flush=True)
        measure = MEASURES[name]
        results[name] = measure.run()
        print_table(measure.rows(results[name]))
        RESULTS.parent.mkdir(parents=True, exist_ok=True)
        RESULTS.write_text(json.dumps(results, indent=1) + "\n")
    if "latency" in results:
        (RESULTS.parent / "latency.svg").write_text(picture(results["latency"]))


if __name__ == "__main__":
    OPTIONS = {"--check": instructions.check, "--store": instructions.store}
    if len(sys.argv) == 2 and sys.argv[1] in OPTIONS:
        OPTIONS[sys.argv[1]]()
    else:
        main(sys.argv[1:])
