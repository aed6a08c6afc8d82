# SPDX-License-Identifier: Apache-2.0
"""The virtual machine: its command line, and a running machine."""

import queue
import subprocess
import threading
import time

# Emulation is fastest with one processor and without the kernel's mitigations.
MACHINE = ("qemu-system-aarch64 -machine virt -cpu cortex-a53 -smp 1 -accel tcg "
           "-nic none -nographic -no-reboot").split()
KERNEL = "console=ttyAMA0 quiet panic=-1 nokaslr kpti=off mitigations=off"


def file_of(path):
    """The options of QEMU's -drive for a file with the disk's content.

    The file must outlive the machine but not the host, so flushes do not reach the host's disk.
    """
    return f"format=raw,cache=unsafe,file={path}"


def command(parts, initramfs, settings, disks, memory=1024):
    """Returns the command line. `disks` maps serial numbers to backings; `memory` is in MiB."""
    kernel = next((parts / "kernel/boot").glob("vmlinuz-*"))
    arguments = ["-m", memory, "-kernel", kernel, "-initrd", initramfs, "-append",
                 f"{KERNEL} {settings}"]
    for name, backing in disks.items():
        arguments += ["-drive", f"if=none,id={name},{backing}",
                      "-device", f"virtio-blk-device,drive={name},serial={name}"]
    return [*MACHINE, *map(str, arguments)]


class Machine:
    """A machine that is started with the object; its console goes to a file and is read by line."""

    def __init__(self, words, console):
        self.process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT)
        self.is_switched_off = False
        self.lines = queue.SimpleQueue()
        self.reader = threading.Thread(target=self.read_console, args=(console,), daemon=True)
        self.reader.start()

    def read_console(self, console):
        with open(console, "ab") as log:
            for line in self.process.stdout:
                log.write(line)
                self.lines.put(line.decode(errors="replace").rstrip())
        self.lines.put(None)

    def next_line(self, deadline):
        """Returns None if the machine is off. Raises queue.Empty at the deadline (monotonic time)."""
        return self.lines.get(timeout=max(0, deadline - time.monotonic()))

    def switch_off(self):
        """Switches off without a shutdown. The earlier lines can still be read."""
        self.is_switched_off = True
        self.process.kill()

    def close(self):
        self.process.kill()
        self.process.wait()
        self.reader.join()
