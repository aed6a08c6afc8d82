# SPDX-License-Identifier: Apache-2.0
"""The virtual machine: its command line, and one that runs."""

import queue
import subprocess
import threading
import time

# What is emulated is fastest with one processor and without the kernel's defences of real ones.
MACHINE = ("qemu-system-aarch64 -machine virt -cpu cortex-a53 -smp 1 -accel tcg "
           "-nic none -nographic -no-reboot").split()
KERNEL = "console=ttyAMA0 quiet panic=-1 nokaslr kpti=off mitigations=off"


def file_of(path):
    """A disk's backing, as QEMU's -drive takes it: a file of the disk's content.

    The file outlives the machine, not the host: flushes need not get through to the host's disk.
    """
    return f"format=raw,cache=unsafe,file={path}"


def command(parts, initramfs, settings, disks, memory=1024):
    """`disks` gives the backing of each by its serial number; `memory` is in MiB."""
    kernel = next((parts / "kernel/boot").glob("vmlinuz-*"))
    arguments = ["-m", memory, "-kernel", kernel, "-initrd", initramfs, "-append",
                 f"{KERNEL} {settings}"]
    for name, backing in disks.items():
        arguments += ["-drive", f"if=none,id={name},{backing}",
                      "-device", f"virtio-blk-device,drive={name},serial={name}"]
    return [*MACHINE, *map(str, arguments)]


class Machine:
    """Runs from its construction on; its console is kept in a file and read line by line."""

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
        """None when the machine is off; raises queue.Empty at the deadline (monotonic time)."""
        return self.lines.get(timeout=max(0, deadline - time.monotonic()))

    def switch_off(self):
        """Without a warning; the lines that came before can still be read."""
        self.is_switched_off = True
        self.process.kill()

    def close(self):
        self.process.kill()
        self.process.wait()
        self.reader.join()
