# SPDX-License-Identifier: Apache-2.0
"""Exchanges a second of the QMI client library, beside a bare send and receive."""

from places import row, run_bench
from latency import SPREADS

ROUNDS = 40
THREADS = {"one_thread": "one thread", "four_threads": "four threads"}


def run():
    return run_bench("bench_exchange", ROUNDS)


def rows(result):
    table = []
    for spread, where in SPREADS.items():
        for threads, many in THREADS.items():
            found = result[spread][threads]
            start = f"exchanges, {many}, {where}: "
            table += [
                row(start + "bare", found["echo_per_s"], "/s"),
                row(start + "client a thread : bare", found["own_client_to_echo"],
                    goal="at least 0.9"),
                row(start + "one client : bare", found["client_to_echo"]),
                row(start + "one client with callback : bare", found["listening_client_to_echo"]),
            ]
    return table
