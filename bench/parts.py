# SPDX-License-Identifier: Apache-2.0
"""Parts of a request's path by themselves, by processor time."""

from places import row, run_bench


def run():
    return run_bench("bench_parts", "--benchmark_format=json", "--benchmark_repetitions=5",
                     "--benchmark_min_time=0.05")


def rows(result):
    found = {each["run_name"]: each["cpu_time"] for each in result["benchmarks"]
             if each.get("aggregate_name") == "median"}
    goals = {"hex_text/1024": "under 1000"}
    return [row(name, time, "ns", goals.get(name, "")) for name, time in found.items()]
