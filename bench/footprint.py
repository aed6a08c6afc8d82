# SPDX-License-Identifier: Apache-2.0
"""Start-up, memory and code of the daemon, heap allocations and system calls of a request."""

import collections
import re
import subprocess
import tempfile

import tracers
from places import DAEMON, NAMES, row, run_bench

ROUNDS = 25
MEMCHECK = "--tool=memcheck --leak-check=no --log-file={out}"

LOG_LINE = ["gettid", "getpid", "write"]
# The calls that a request needs: of its exchanges, and its own.
EXCHANGE = {"sendto", "recvmsg", "poll", "epoll_ctl", "futex"}
OWN = {"pselect6": 1, "read": 1, "write": 1}


def sections():
    """Returns the sections of the stripped executable, in bytes."""
    with tempfile.NamedTemporaryFile() as stripped:
        subprocess.run(["strip", "-o", stripped.name, str(DAEMON)], check=True)
        table = subprocess.run(["size", stripped.name], check=True, text=True,
                               stdout=subprocess.PIPE).stdout
    text, data, bss = table.splitlines()[1].split()[:3]
    return {"text": int(text), "data": int(data), "bss": int(bss)}


def allocations(text):
    found = re.search(r"total heap usage: ([\d,]+) allocs", text)
    return {"allocations": int(found[1].replace(",", ""))}


def count_calls(calls):
    """Counts calls by name; the three of a log line count as one "log line"."""
    names = [call.name for call in calls]
    counted = collections.Counter()
    while names:
        if names[:len(LOG_LINE)] == LOG_LINE:
            counted["log line"] += 1
            del names[:len(LOG_LINE)]
        else:
            counted[names.pop(0)] += 1
    return dict(counted)


def beyond(counted):
    """Counts the calls that a request does not need."""
    known = EXCHANGE | {"log line"}
    return sum(count - OWN.get(name, 0) for name, count in counted.items() if name not in known)


def run():
    recorded = tracers.write_plan()
    result = run_bench("bench_whole", ROUNDS, QOREXT_BENCH_PLAN=str(tracers.PLAN))
    result["sections"] = sections()
    result["calls"] = {name: count_calls(calls) for name, calls in zip(NAMES, recorded)}
    result["allocations"] = {name: tracers.per_request(MEMCHECK, name, allocations)["allocations"]
                             for name in NAMES}
    return result


def rows(result):
    table = [
        row("start, until it has answered a request", result["start_ms"], "ms", "under 10"),
        row("start, daemon : limit", result["start_ratio"]),
        row("start, processor time", result["start_processor_ms"], "ms"),
        row("indications to the parent", result["indications_per_s"], "/s"),
        row("an indication, processor time", result["indication_processor_us"], "us"),
        row("private memory", result["private_kib"], "KiB", "under 400"),
        row("threads", result["threads"]),
        row("text, stripped", result["sections"]["text"] / 1024, "KiB", "under 100"),
        row("data and bss", (result["sections"]["data"] + result["sections"]["bss"]) / 1024, "KiB"),
    ]
    for name, what in NAMES.items():
        calls = ", ".join(f"{count} {call}" for call, count in result["calls"][name].items())
        table += [
            row(f"{what}: heap allocations", result["allocations"][name], goal="at most 1"),
            row(f"{what}: system calls beyond those needed", beyond(result["calls"][name]),
                goal=f"0 ({calls})"),
        ]
    return table
