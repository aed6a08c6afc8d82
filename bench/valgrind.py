# SPDX-License-Identifier: Apache-2.0
"""The daemon under a tool of valgrind, serving one kind of request so many times."""

import subprocess
import tempfile
from pathlib import Path

from places import DAEMON, bench_program

WRAPPER = """#!/bin/sh
exec valgrind {tool} --vgdb=no {daemon} "$@"
"""
FEW, MANY = 20, 520


def output(tool, request, count):
    """What the tool writes; its words name the file {out} for it."""
    with tempfile.TemporaryDirectory() as folder:
        out, wrapper = Path(folder, "out"), Path(folder, "daemon")
        # It is written when the daemon has become the radio user.
        Path(folder).chmod(0o755)
        out.touch()
        out.chmod(0o666)
        wrapper.write_text(WRAPPER.format(tool=tool.format(out=out), daemon=DAEMON))
        wrapper.chmod(0o755)
        words = [bench_program("bench_latency"), "repeat", wrapper, request, count]
        subprocess.run(list(map(str, words)), check=True, stderr=subprocess.DEVNULL)
        return out.read_text()


def per_request(tool, request, count_of):
    """The difference of two runs with different numbers of requests, so that start and end are not
    in it. count_of() finds numbers by name in the tool's output."""
    few = count_of(output(tool, request, FEW))
    many = count_of(output(tool, request, MANY))
    return {name: round((many[name] - few.get(name, 0)) / (MANY - FEW), 2) for name in many}
