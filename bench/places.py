"""Where things lie, and how to run what measures."""

import json
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/release"
RESULTS = ROOT / "build/bench/results.json"


def run_bench(name, *arguments):
    """The JSON that one of the benchmark programs prints."""
    words = [str(BUILD / "bench" / name), *map(str, arguments)]
    return json.loads(subprocess.run(words, check=True, stdout=subprocess.PIPE).stdout)


def row(what, value, unit="", goal=""):
    return {"what": what, "value": value, "unit": unit, "goal": goal}
