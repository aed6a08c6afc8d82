# SPDX-License-Identifier: Apache-2.0
"""From request to reply, of the daemon and of the limit program beside it."""

import recording
from places import row, run_bench

ROUNDS = 80
GOAL = 1.15
NAMES = {"unknown": "unknown id", "nv_read": "NV read", "get_nam": "get NAM",
         "data_plmn": "data PLMN"}
SPREADS = {"one_core": "one core", "two_cores": "two cores"}


def run():
    recording.write_plan()
    return run_bench("bench_latency", ROUNDS, QOREXT_BENCH_PLAN=str(recording.PLAN))


def rows(result):
    table = []
    for spread, where in SPREADS.items():
        for name, what in NAMES.items():
            found = result[spread][name]
            start = f"{what}, {where}: "
            table += [
                row(start + "p50", found["daemon"]["p50_us"], "us"),
                row(start + "p99", found["daemon"]["p99_us"], "us"),
                row(start + "p50, daemon : limit", found["p50_ratio"], goal=f"at most {GOAL}"),
                row(start + "p99, daemon : limit", found["p99_ratio"]),
            ]
    return table
