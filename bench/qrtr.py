# SPDX-License-Identifier: Apache-2.0
"""Exchanges a second of the client library and of libqmi-glib, on QRTR in the virtual handset.

Needs the handset's parts (tests/handset/fetch) and the target bench of the arm64 build; ./dev bench
qrtr makes both.
"""

import json
import statistics
import subprocess
import sys

from places import ROOT, row

sys.path.append(str(ROOT / "tests/handset"))

TIME_LIMIT = 600  # seconds
MEMORY = 512      # MiB
PROGRAMS = {"bin/qorext_modem", "bench/bench_modem", "bench/bench_exchange",
            "bench/bench_qmi_glib"}
MODEMS = {"bench_modem": "modem that repeats its answers", "qorext_modem": "simulated modem"}
GOAL = "at least 2"


def make_image(build, parts):
    import image  # of the handset's tests

    class BenchImage(image.Image):
        def add_programs(self):
            self.add(self.sysroot / "bin/busybox", "bin/busybox")
            for name in PROGRAMS:
                self.add(self.build / name, f"system/{name.replace('bench/', 'bin/')}")
            self.copy(ROOT / "bench/guest_init", "init")
            self.copy(self.sysroot / "lib/ld-linux-aarch64.so.1", "lib/ld-linux-aarch64.so.1")

    BenchImage(build, parts).make(parts / "bench.initramfs")


def boot(parts):
    """Returns the benchmark lines that the guest prints."""
    import machine  # of the handset's tests

    words = machine.command(parts, parts / "bench.initramfs", "", {}, MEMORY)
    done = subprocess.run(["timeout", "--foreground", str(TIME_LIMIT), *words],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
    return [line.strip() for line in done.stdout.splitlines() if line.startswith("bench ")]


def compare(lines):
    """Returns medians for one modem; ratios are those of neighbouring runs."""
    glib = [float(line.split()[3]) for line in lines if line.split()[2] == "glib"]
    own = [json.loads(line.split(None, 3)[3])["qrtr"]["one_thread"] for line in lines
           if line.split()[2] == "own"]
    return {"glib_per_s": statistics.median(glib),
            "own_per_s": statistics.median(each["client_per_s"] for each in own),
            "own_to_glib": statistics.median(each["client_per_s"] / rate
                                             for each, rate in zip(own, glib, strict=True)),
            "own_to_echo": statistics.median(each["client_to_echo"] for each in own)}


def run(build=ROOT / "build/arm64", parts=ROOT / "build/handset"):
    make_image(build, parts)
    lines = boot(parts)
    return {modem: compare([line for line in lines if line.split()[1] == modem])
            for modem in MODEMS}


def rows(result):
    table = []
    for modem, what in MODEMS.items():
        found = result[modem]
        table += [
            row(f"QRTR, {what}: our client : libqmi-glib", found["own_to_glib"], goal=GOAL),
            row(f"QRTR, {what}: our client : bare", found["own_to_echo"]),
        ]
    return table
