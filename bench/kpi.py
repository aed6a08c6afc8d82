# SPDX-License-Identifier: Apache-2.0
"""The upload of the modem's KPI log into files, beside cp and fsync of the same bytes."""

from places import row, run_bench


def run():
    return run_bench("bench_kpi")


def rows(result):
    return [
        row("KPI upload", result["upload_mib_per_s"], "MiB/s"),
        row("cp and fsync", result["copy_mib_per_s"], "MiB/s"),
        row("as many packages, each synchronised", result["packages_mib_per_s"], "MiB/s"),
        row("KPI upload : cp and fsync, time", result["upload_to_copy_time"]),
        row("KPI upload : as many packages, time", result["upload_to_packages_time"]),
        row("the daemon's processor time", result["daemon_processor_ms_per_mib"], "ms/MiB"),
    ]
