# SPDX-License-Identifier: Apache-2.0
"""Cuts the power while packages are being stored, and checks the logs at the next boot."""

import dataclasses
import random

import drive
import machine
import packages
import verify

UPLOADS = 150          # packages for one boot; the power fails earlier
REACH = (20, 80, 300)  # upper limits of the writes and flushes before the power fails,
ACKNOWLEDGEMENTS = 4   # or of the acknowledgements
CUTS_PER_DISK = 6      # a new disk is needed to cut the creation of first logs


@dataclasses.dataclass(frozen=True)
class Moment:
    """When the power fails, counted from the report about the last cut."""

    writes: int = 0            # and flushes; or, when 0,
    acknowledgements: int = 0

    def __str__(self):
        if self.writes:
            return f"off after {self.writes} writes and flushes"
        return f"off right after acknowledgement {self.acknowledgements}"


def random_moment(rng):
    if rng.random() < 0.3:
        return Moment(acknowledgements=rng.randint(1, ACKNOWLEDGEMENTS))
    return Moment(writes=rng.randint(1, rng.choice(REACH)))


class Trial:
    """Cuts on one file system."""

    def __init__(self, handset, seed):
        self.handset = handset
        self.moments = random.Random(f"{seed} moments")
        self.cache = random.Random(f"{seed} cache")  # selects the blocks that are written
        self.next_number = packages.FIRST
        self.acknowledged = {}  # on the current disk: number -> log
        self.total = 0
        self.rotations = 0
        self.lost = 0

    def run(self, count):
        for cut in range(count):
            is_new = cut % CUTS_PER_DISK == 0
            if is_new:
                self.check_last_cut()
                self.medium = self.handset.make_file_system()
                self.acknowledged = {}
            # On every other new disk, the log directory exists before the first log.
            directory = "made" if is_new and cut % (2 * CUTS_PER_DISK) else "as_it_is"
            self.say(f"cut {cut + 1}: {self.cut(directory)}")
        self.check_last_cut()

    def say(self, text):
        print(f"{self.handset.file_system}: {text}", flush=True)

    def check_last_cut(self):
        if self.acknowledged:
            Boot(self, None).run()

    def cut(self, directory):
        before = self.total
        moment = random_moment(self.moments)
        used = Boot(self, moment).run(directory)
        in_cache, kept = used.settle(self.cache)
        self.medium = bytes(used.medium)
        return (f"{moment}, {self.total - before} packages acknowledged, "
                f"{kept} of {in_cache} unflushed blocks kept")

    def write_uploads(self):
        numbers = range(self.next_number, self.next_number + UPLOADS)
        self.next_number += UPLOADS
        path = self.handset.file("uploads")
        packages.write_archive(path, numbers)
        return path

    def examine(self, report):
        before, after = verify.parse(report)
        newest = max(self.acknowledged)  # uploaded between the two parts of the report
        earlier = {number: log for number, log in self.acknowledged.items() if number != newest}
        found = verify.faults(before, earlier) | verify.faults(after, self.acknowledged)
        if found:
            self.say(verify.describe(found))
        self.lost += len(found)
        for number in found:
            del self.acknowledged[number]


class Boot:
    """From power-on until the power fails, or until the first report if there is no moment."""

    def __init__(self, trial, moment):
        self.trial = trial
        self.moment = moment
        self.is_counting = False
        self.counted = 0  # acknowledgements
        # The packages acknowledged earlier are checked before the power fails again.
        self.has_report = bool(trial.acknowledged)

    def run(self, directory="as_it_is"):
        handset = self.trial.handset
        self.drive = drive.Drive(self.trial.medium)
        self.report = handset.new_disk("report")
        self.phone = handset.start(f"task=cut directory={directory}", {
            "data": self.drive.backing(), "report": machine.file_of(self.report),
            "uploads": machine.file_of(self.trial.write_uploads())})
        handset.run_until_off(self.phone, self.handle)
        self.drive.close()
        return self.drive

    def handle(self, words):
        """Handles a message of the handset."""
        if words[0] == "acknowledged":
            self.acknowledge(packages.number_of(words[1]), words[2])
        elif words[0] == "handed":
            self.trial.rotations += 1
        elif words[0] == "reported" and self.has_report:
            self.trial.examine(self.report.read_bytes())
        if words[0] == ("reported" if self.has_report else "uploading"):
            self.start_counting()

    def start_counting(self):
        self.is_counting = True
        if self.moment is None:
            self.phone.switch_off()
        elif self.moment.writes:
            self.drive.fail_after(self.moment.writes, self.phone.switch_off)

    def acknowledge(self, number, log):
        self.trial.acknowledged[number] = log
        self.trial.total += 1
        self.counted += self.is_counting
        if self.moment and self.counted == self.moment.acknowledgements > 0:
            self.phone.switch_off()
