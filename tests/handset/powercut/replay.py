# SPDX-License-Identifier: Apache-2.0
"""Records the writes of a first log, merges and rotations, and checks every state of the disk in
which the power could have failed."""

import drive
import guest
import log_writes
import machine
import packages
import verify

UPLOADS = 7  # a rotation after every third; the second rotation removes the oldest log
RECORD_SIZE = 512 << 20


class Replay:
    def __init__(self, handset):
        self.handset = handset
        self.logs = {}      # number of an acknowledged package -> log
        self.rotations = 0
        self.states = []    # for each state, the packages acknowledged before it
        self.faulty = 0     # states with a fault

    def run(self):
        empty = self.handset.make_file_system()
        self.record(empty)
        self.build_states(empty)
        self.inspect()

    def record(self, empty):
        disk = self.handset.file("data")
        disk.write_bytes(empty)
        packages.write_archive(self.handset.file("uploads"),
                               range(packages.FIRST, packages.FIRST + UPLOADS))
        phone = self.handset.start("task=record directory=made", {
            "data": machine.file_of(disk),
            "record": machine.file_of(self.handset.new_disk("record", RECORD_SIZE)),
            "uploads": machine.file_of(self.handset.file("uploads"))})
        self.handset.run_until_off(phone, self.handle)
        if len(self.logs) != UPLOADS:
            raise guest.Failure(f"{len(self.logs)} of {UPLOADS} packages acknowledged")

    def handle(self, words):
        """Handles a message of the handset."""
        if words[0] == "acknowledged":
            self.logs[packages.number_of(words[1])] = words[2]
        self.rotations += words[0] == "handed"

    def build_states(self, empty):
        """Writes all consecutive states to one disk."""
        disk, acknowledged, is_changed = bytearray(empty), [], False
        with open(self.handset.new_disk("states", 0), "wb") as states:
            for entry in log_writes.entries(self.handset.file("record")):
                disk[entry.offset:entry.offset + len(entry.data)] = entry.data
                is_changed |= bool(entry.data)
                if entry.mark:
                    acknowledged.append(packages.number_of(entry.mark))
                if entry.mark or (entry.is_barrier() and is_changed):
                    self.states.append(list(acknowledged))
                    write_with_holes(states, disk)
                    is_changed = False

    def inspect(self):
        report = self.handset.new_disk("report")
        sectors = guest.DISK_SIZE // log_writes.SECTOR
        phone = self.handset.start(
            f"task=inspect states={len(self.states)} sectors={sectors}",
            {"states": machine.file_of(self.handset.file("states")),
             "report": machine.file_of(report)})
        self.handset.run_until_off(phone, lambda words: None)
        found = verify.parse(report.read_bytes())
        if len(found) != len(self.states):
            raise guest.Failure(f"{len(found)} of {len(self.states)} states checked")
        for number, (logs, acknowledged) in enumerate(zip(found, self.states)):
            known = {package: self.logs[package] for package in acknowledged}
            if faults := verify.faults(logs, known):
                self.faulty += 1
                print(f"{self.handset.file_system}: state {number} of {len(found)}: "
                      f"{verify.describe(faults)}", flush=True)


def write_with_holes(file, image):
    start = file.tell()
    for at in range(0, len(image), drive.BLOCK):
        block = image[at:at + drive.BLOCK]
        if block.count(0) != len(block):
            file.seek(start + at)
            file.write(block)
    file.truncate(start + len(image))
    file.seek(start + len(image))
