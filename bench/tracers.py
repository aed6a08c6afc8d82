# SPDX-License-Identifier: Apache-2.0
"""The daemon under strace, which records its calls, and under the tools of valgrind."""

import re
import subprocess
import tempfile
from pathlib import Path

from places import DAEMON, ROOT, bench_program

PLAN = ROOT / "build/bench/plan.txt"

# "1234 call(arguments) = result", strings in \xNN. The two parts of an interrupted call are joined.
CALL = re.compile(r"^(\d+) +(\w+)\((.*)\) += (-?\w+)")
UNFINISHED = re.compile(r"^(\d+) +(.*?) *<unfinished \.\.\.>$")
RESUMED = re.compile(r"^(\d+) +<\.\.\. \w+ resumed>(.*)$")

STRINGS = re.compile(r'"((?:\\x[0-9a-f]{2})*)"')
STANDARD_ERROR = 2
HELLO = 2  # the first word of the packet that attaches a socket to a service

WRAPPER = """#!/bin/sh
exec valgrind {tool} --vgdb=no {daemon} "$@"
"""
FEW, MANY = 20, 520


class Call:
    def __init__(self, thread, name, arguments, result):
        self.thread, self.name, self.arguments, self.result = thread, name, arguments, result
        texts = STRINGS.findall(arguments)
        self.data = bytes.fromhex(texts[0].replace("\\x", "")) if texts else b""

    @property
    def descriptor(self):
        word = self.arguments.split(",")[0].split("<")[0]
        return int(word) if word.isdigit() else -1


def parse(lines):
    begun = {}
    for line in lines:
        if match := UNFINISHED.match(line):
            begun[match[1]] = match[2]
            continue
        if match := RESUMED.match(line):
            line = f"{match[1]} {begun.pop(match[1], '')}{match[2]}"
        if match := CALL.match(line):
            yield Call(*match.groups())


def daemon_calls():
    """Returns the calls of all threads of the daemon while it serves each request twice."""
    with tempfile.NamedTemporaryFile("r") as trace:
        subprocess.run(["strace", "-f", "-qq", "-xx", "-s", "4096", "-o", trace.name,
                        bench_program("bench_latency"), "record", str(DAEMON)], check=True)
        calls = list(parse(trace.read().splitlines()))
    path = str(DAEMON).encode()
    started = next(i for i, call in enumerate(calls)
                   if call.name == "execve" and call.data.endswith(path[-20:]))
    threads = {calls[started].thread}
    own = []
    for call in calls[started:]:
        if call.thread not in threads:
            continue
        own.append(call)
        if call.name in ("clone", "clone3") and call.result.isdigit():
            threads.add(call.result)
    return own


def split_requests(calls):
    """Returns the calls of each request: from its read to the wait for the next one."""
    main = calls[0].thread
    requests, current = [], None
    for call in calls:
        if call.thread == main and call.name == "pselect6":
            current = []
            requests.append(current)
        if current is not None:
            current.append(call)
    return [each for each in requests if any(call.name == "read" and call.data for call in each)]


def services(calls):
    """Returns the service of each socket of the daemon."""
    attached = {}
    for call in calls:
        if call.name == "sendto" and call.data[:4] == HELLO.to_bytes(4, "little"):
            attached[call.descriptor] = int.from_bytes(call.data[4:8], "little")
    return attached


def step(call, service_of, reply_descriptor):
    if call.name == "sendto":
        return f"exchange {service_of[call.descriptor]} {call.data.hex()}"
    if call.name != "write":
        return None
    if call.descriptor == reply_descriptor:
        return f"reply {call.data.hex()}"
    if call.descriptor == STANDARD_ERROR:
        return f"log {call.data.hex()}"
    return None


def write_plan():
    """Writes the plan of the limit program and returns the calls of each request, in order."""
    calls = daemon_calls()
    requests = split_requests(calls)
    measured = requests[len(requests) // 2 + 1:]  # the first round opens files that stay open
    service_of = services(calls)
    main = calls[0].thread
    lines = []
    for each in measured:
        request = next(call for call in each if call.name == "read")
        reply = next(call for call in reversed(each)
                     if call.name == "write" and call.descriptor != STANDARD_ERROR
                     and call.thread == main)
        lines.append(f"request {request.data.hex()}")
        steps = (step(call, service_of, reply.descriptor) for call in each if call.thread == main)
        lines.extend(filter(None, steps))
    PLAN.parent.mkdir(parents=True, exist_ok=True)
    PLAN.write_text("\n".join(lines) + "\n")
    return measured


def valgrind_output(tool, request, count):
    """Returns the file that the tool writes; {out} in its options is the path."""
    with tempfile.TemporaryDirectory() as folder:
        out, wrapper = Path(folder, "out"), Path(folder, "daemon")
        # The daemon writes it as the radio user.
        Path(folder).chmod(0o755)
        out.touch()
        out.chmod(0o666)
        wrapper.write_text(WRAPPER.format(tool=tool.format(out=out), daemon=DAEMON))
        wrapper.chmod(0o755)
        words = [bench_program("bench_latency"), "repeat", wrapper, request, count]
        subprocess.run(list(map(str, words)), check=True, stderr=subprocess.DEVNULL)
        return out.read_text()


def per_request(tool, request, count_of):
    """Returns numbers by name, which count_of() finds in the tool's output, per request: the
    difference of two runs with different numbers of requests, without start and end."""
    few = count_of(valgrind_output(tool, request, FEW))
    many = count_of(valgrind_output(tool, request, MANY))
    return {name: round((many[name] - few.get(name, 0)) / (MANY - FEW), 2) for name in many}
