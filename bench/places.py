# SPDX-License-Identifier: Apache-2.0
"""Paths, names and helpers that the benchmarks share."""

import json
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ.get("QOREXT_BENCH_BUILD", ROOT / "build/release"))
DAEMON = BUILD / "bin/qorext_client"
RESULTS = ROOT / "build/bench/results.json"

# Measured requests and bindings to processors: as in the results and as in tables.
NAMES = {"unknown": "unknown id", "nv_read": "NV read", "get_nam": "get NAM",
         "data_plmn": "data PLMN"}
SPREADS = {"one_core": "one core", "two_cores": "two cores"}


def bench_program(name):
    return str(BUILD / "bench" / name)


def run_bench(name, *arguments, **environment):
    """Runs a benchmark program and returns the JSON that it prints."""
    done = subprocess.run([bench_program(name), *map(str, arguments)], check=True,
                          stdout=subprocess.PIPE, env={**os.environ, **environment})
    return json.loads(done.stdout)


def row(what, value, unit="", goal=""):
    return {"what": what, "value": value, "unit": unit, "goal": goal}
