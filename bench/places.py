# SPDX-License-Identifier: Apache-2.0
"""Where things lie, and how to run what measures."""

import json
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ.get("QOREXT_BENCH_BUILD", ROOT / "build/release"))
DAEMON = BUILD / "bin/qorext_client"
RESULTS = ROOT / "build/bench/results.json"


def bench_program(name):
    return str(BUILD / "bench" / name)


def run_bench(name, *arguments, **environment):
    """The JSON that one of the benchmark programs prints."""
    done = subprocess.run([bench_program(name), *map(str, arguments)], check=True,
                          stdout=subprocess.PIPE, env={**os.environ, **environment})
    return json.loads(done.stdout)


def row(what, value, unit="", goal=""):
    return {"what": what, "value": value, "unit": unit, "goal": goal}
