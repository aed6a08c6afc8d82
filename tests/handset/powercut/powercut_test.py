#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests of the power cuts' own parts: the check for lost packages, and the drive's cache."""

import pathlib
import random
import struct
import sys
import tempfile
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))

import drive
import log_writes
import packages
import verify

OLDEST, OLD, NEW = (f"/data/vorn/vorn_2026010{day}000000.log" for day in (1, 2, 3))
PACKAGE = packages.FIRST
DATA = packages.content(PACKAGE)


def logs(current, previous, **contents):
    names = {"oldest": OLDEST, "old": OLD, "new": NEW}
    report = b"== link .0001 %s\n== link .0002 %s\n" % (current.encode(), previous.encode())
    for name, content in contents.items():
        report += b"== log %s\n%s\n" % (names[name].encode(), content)
    return verify.parse(report + b"== end\n" + bytes(512))[0]


def is_faulty(found, log):
    return PACKAGE in verify.faults(found, {PACKAGE: log})


class Verify(unittest.TestCase):
    def test_finds_a_package_in_either_linked_log(self):
        self.assertFalse(is_faulty(logs(NEW, OLD, new=b"..." + DATA, old=b""), NEW))
        self.assertFalse(is_faulty(logs(NEW, OLD, new=b"", old=DATA + b"..."), OLD))

    def test_ignores_a_hole(self):
        self.assertFalse(is_faulty(logs(NEW, "", new=bytes(4096) + DATA), NEW))

    def test_reports_an_incomplete_package(self):
        self.assertTrue(is_faulty(logs(NEW, OLD, new=DATA[:-1], old=b""), NEW))
        self.assertTrue(is_faulty(logs(NEW, OLD, new=DATA[:5] + bytes(3) + DATA[8:]), NEW))

    def test_reports_a_package_whose_link_is_missing(self):
        self.assertTrue(is_faulty(logs("", "", new=DATA), NEW))
        self.assertTrue(is_faulty(logs(OLD, OLDEST, new=DATA, old=b""), NEW))

    def test_reports_a_duplicate_package(self):
        self.assertTrue(is_faulty(logs(NEW, OLD, new=DATA + DATA), NEW))
        self.assertTrue(is_faulty(logs(NEW, "", new=DATA, old=DATA), NEW))

    def test_ignores_a_log_that_is_older_than_both_links(self):
        self.assertFalse(is_faulty(logs(NEW, OLD, new=b"", old=b""), OLDEST))
        self.assertTrue(is_faulty(logs(NEW, "", new=b""), OLDEST))

    def test_reports_a_log_between_those_that_the_links_name(self):
        self.assertTrue(is_faulty(logs(NEW, OLDEST, new=b"", oldest=b"", old=DATA), OLD))

    def test_accepts_a_log_that_both_links_name(self):
        self.assertFalse(is_faulty(logs(OLD, OLD, old=DATA), OLD))


class Drive(unittest.TestCase):
    def setUp(self):
        self.drive = drive.Drive(bytes(4 * drive.BLOCK))
        self.addCleanup(self.drive.close)

    def write(self, block, letter):
        self.drive.change(drive.WRITE, block * drive.BLOCK, letter * drive.BLOCK)

    def test_returns_written_data(self):
        self.write(1, b"a")
        self.assertEqual(self.drive.read(drive.BLOCK, 1), b"a")

    def test_keeps_flushed_data(self):
        self.write(1, b"a")
        self.drive.change(drive.FLUSH, 0, b"")
        self.assertEqual(self.drive.settle(random.Random(0)), (0, 0))
        self.assertEqual(self.drive.medium[drive.BLOCK], ord("a"))

    def test_can_lose_every_unflushed_block(self):
        for block in range(4):
            self.write(block, b"a")
        in_cache, kept = self.drive.settle(random.Random(1))
        self.assertEqual(in_cache, 4)
        self.assertLess(kept, 4)
        self.assertEqual(self.drive.medium.count(ord("a")), kept * drive.BLOCK)


class LogWrites(unittest.TestCase):
    def test_are_read_in_order(self):
        sector = log_writes.SECTOR
        record = log_writes.HEADER.pack(log_writes.MAGIC, log_writes.VERSION, 4, sector)
        record = record.ljust(sector, b"\0")
        for place, size, flags, data, mark in (
                (8, 1, 0, b"a" * sector, b""), (0, 0, log_writes.FLUSH, b"", b""),
                (16, 2, log_writes.DISCARD, b"", b""), (0, 0, log_writes.MARK, b"", b"here")):
            entry = struct.pack("<QQQQ", place, size, flags, len(mark)) + mark
            record += entry.ljust(sector, b"\0") + data
        with tempfile.NamedTemporaryFile() as file:
            file.write(record)
            file.flush()
            entries = list(log_writes.entries(file.name))
        self.assertEqual([entry.is_barrier() for entry in entries], [False, True, False, True])
        self.assertEqual((entries[0].offset, entries[0].data), (8 * sector, b"a" * sector))
        self.assertEqual((entries[2].data, entries[3].mark), (b"", "here"))


if __name__ == "__main__":
    unittest.main()
