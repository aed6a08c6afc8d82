# SPDX-License-Identifier: Apache-2.0
"""Has a first log, merges and rotations recorded write by write, and looks at every state in which
the power could have failed."""

import drive
import guest
import judge
import log_writes
import machine
import packages

UPLOADS = 7  # with a rotation after every third, the second of which removes the oldest log
RECORD_SIZE = 512 << 20


class Replay:
    def __init__(self, handset):
        self.handset = handset
        self.logs = {}      # where each package was acknowledged: number -> log
        self.rotations = 0
        self.states = []    # the packages that were acknowledged before each state
        self.faulty = 0     # of the states

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
        self.handset.attend(phone, self.take)
        if len(self.logs) != UPLOADS:
            raise guest.Failure(f"{len(self.logs)} of {UPLOADS} packages acknowledged")

    def take(self, words):
        """A message of the handset."""
        if words[0] == "acknowledged":
            self.logs[packages.number_of(words[1])] = words[2]
        self.rotations += words[0] == "handed"

    def build_states(self, empty):
        """Writes the states to one disk, one after the other, from the first mark's flush on."""
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
        self.handset.attend(phone, lambda words: None)
        found = judge.parse(report.read_bytes())
        if len(found) != len(self.states):
            raise guest.Failure(f"{len(found)} of {len(self.states)} states looked at")
        for number, (logs, acknowledged) in enumerate(zip(found, self.states)):
            known = {package: self.logs[package] for package in acknowledged}
            if faults := judge.faults(logs, known):
                self.faulty += 1
                print(f"{self.handset.file_system}: state {number} of {len(found)}: "
                      f"{judge.described(faults)}", flush=True)


def write_with_holes(file, image):
    start = file.tell()
    for at in range(0, len(image), drive.BLOCK):
        block = image[at:at + drive.BLOCK]
        if block.count(0) != len(block):
            file.seek(start + at)
            file.write(block)
    file.truncate(start + len(image))
    file.seek(start + len(image))
