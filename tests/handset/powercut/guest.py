# SPDX-License-Identifier: Apache-2.0
"""The handset for power cuts: its image, disks and runs."""

import queue
import subprocess
import time

import image
import machine

TIME_LIMIT = 180  # seconds for one run; an idle host needs a tenth of it
MEMORY = 256       # MiB
DISK_SIZE = 64 << 20
BOOT_INTERVAL = 600  # seconds on the handset's clock
RADIO_USER = "1001:1001"
MAKE = {"ext4": ["mke2fs", "-q", "-F", "-t", "ext4", "-E", f"root_owner={RADIO_USER}"],
        "f2fs": ["mkfs.f2fs", "-q", "-f", "-R", RADIO_USER]}


class Failure(Exception):
    """The handset failed in a way that is not a lost package."""


class Image(image.Image):
    programs = ("bin/busybox", "usr/sbin/chroot", "sbin/dmsetup")
    tests = ()
    guest = {"guest/base": "base",
             "powercut/guest_init": "init",
             "guest/qorext_client": "system/bin/qorext_client"}
    needed_modules = ("virtio_mmio", "virtio_blk", "crc32c_generic", "crc32_generic", "ext4",
                      "f2fs", "qrtr", "dm_log_writes")


class Handset:
    """The files of a handset with one file system, and its runs."""

    def __init__(self, build, parts, file_system):
        self.parts = parts
        self.file_system = file_system
        self.folder = parts / "powercut" / file_system
        self.folder.mkdir(parents=True, exist_ok=True)
        self.clock = int(time.time())
        self.file("console.log").write_bytes(b"")
        Image(build, parts, self.folder / "root").make(self.file("initramfs"))

    def file(self, name):
        return self.folder / name

    def new_disk(self, name, size=DISK_SIZE):
        """Creates an empty sparse disk."""
        path = self.file(name)
        path.unlink(missing_ok=True)
        with open(path, "wb") as disk:
            disk.truncate(size)
        return path

    def make_file_system(self):
        """Returns the content of a disk with an empty file system."""
        path = self.new_disk("empty")
        subprocess.run([*MAKE[self.file_system], path], check=True, stdout=subprocess.DEVNULL)
        return path.read_bytes()

    def start(self, task, disks):
        self.clock += BOOT_INTERVAL
        settings = f"filesystem={self.file_system} now={self.clock} {task}"
        words = machine.command(self.parts, self.file("initramfs"), settings, disks, MEMORY)
        return machine.Machine(words, self.file("console.log"))

    def run_until_off(self, phone, handle):
        """Passes the words of each message to `handle` until the handset is off."""
        deadline = time.monotonic() + TIME_LIMIT
        words = []
        try:
            while (line := phone.next_line(deadline)) is not None:
                if message := message_in(line):
                    words = message.split()
                    handle(words)
        except queue.Empty:
            raise Failure(f"{self.file_system}: still on after {TIME_LIMIT} s") from None
        finally:
            phone.close()
        if words != ["finished"] and not phone.is_switched_off:
            raise Failure(f"{self.file_system}: switched off unexpectedly")


def message_in(line):
    _, _, message = line.partition("handset: ")
    if "Kernel panic" in line or message.startswith(("failure:", "cannot")):
        raise Failure(line)
    return message
