# SPDX-License-Identifier: Apache-2.0
"""The benchmarks by name. run() returns everything measured, rows() the table of it."""

from typing import Callable, NamedTuple

import footprint
import instructions
import qrtr
import tracers
from places import NAMES, SPREADS, row, run_bench

LATENCY_ROUNDS = 80
EXCHANGE_ROUNDS = 40
LATENCY_GOAL = 1.15
PART_GOALS = {"hex_text/1024": "under 1000"}


class Measure(NamedTuple):
    run: Callable
    rows: Callable


def run_latency():
    """From request to reply, of the daemon and of the limit program."""
    tracers.write_plan()
    return run_bench("bench_latency", LATENCY_ROUNDS, QOREXT_BENCH_PLAN=str(tracers.PLAN))


def latency_rows(result):
    table = []
    for spread, where in SPREADS.items():
        for name, what in NAMES.items():
            found = result[spread][name]
            start = f"{what}, {where}: "
            table += [
                row(start + "p50", found["daemon"]["p50_us"], "us"),
                row(start + "p99", found["daemon"]["p99_us"], "us"),
                row(start + "p50, daemon : limit", found["p50_ratio"],
                    goal=f"at most {LATENCY_GOAL}"),
                row(start + "p99, daemon : limit", found["p99_ratio"]),
            ]
    return table


def run_exchanges():
    """Exchanges a second of the QMI client library, and of a bare send and receive."""
    return run_bench("bench_exchange", EXCHANGE_ROUNDS)


def exchange_rows(result):
    table = []
    for spread, where in SPREADS.items():
        for threads, many in {"one_thread": "one thread", "four_threads": "four threads"}.items():
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


def run_parts():
    """Single steps of the handling of a request, by processor time."""
    return run_bench("bench_parts", "--benchmark_format=json", "--benchmark_repetitions=5",
                     "--benchmark_min_time=0.05")


def part_rows(result):
    found = {each["run_name"]: each["cpu_time"] for each in result["benchmarks"]
             if each.get("aggregate_name") == "median"}
    return [row(name, time, "ns", PART_GOALS.get(name, "")) for name, time in found.items()]


def run_kpi():
    """The upload of the modem's KPI log into files, and cp and fsync of the same bytes."""
    return run_bench("bench_kpi")


def kpi_rows(result):
    return [
        row("KPI upload", result["upload_mib_per_s"], "MiB/s"),
        row("cp and fsync", result["copy_mib_per_s"], "MiB/s"),
        row("as many packages, each synchronised", result["packages_mib_per_s"], "MiB/s"),
        row("KPI upload : cp and fsync, time", result["upload_to_copy_time"]),
        row("KPI upload : as many packages, time", result["upload_to_packages_time"]),
        row("the daemon's processor time", result["daemon_processor_ms_per_mib"], "ms/MiB"),
    ]


MEASURES = {
    "latency": Measure(run_latency, latency_rows),
    "exchanges": Measure(run_exchanges, exchange_rows),
    "footprint": Measure(footprint.run, footprint.rows),
    "instructions": Measure(instructions.run, instructions.rows),
    "parts": Measure(run_parts, part_rows),
    "kpi": Measure(run_kpi, kpi_rows),
    "qrtr": Measure(qrtr.run, qrtr.rows),
}

# Needs more than a workstation's build.
ONLY_BY_NAME = {"qrtr"}
