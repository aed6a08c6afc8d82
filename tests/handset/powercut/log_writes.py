# SPDX-License-Identifier: Apache-2.0
"""Reads a record of the writes to a disk by the kernel's dm-log-writes.

The record starts with a sector that contains the number of entries. Each entry is a sector with its
description, followed by the sectors written. All numbers are little-endian. Writes are recorded with
the flush that follows them, so every prefix of the record that ends in a flush, a forced write or a
mark is the guaranteed content of the medium at that time.
"""

import dataclasses
import struct

MAGIC, VERSION = 0x6A736677736872, 1
HEADER = struct.Struct("<QQQI")
ENTRY = struct.Struct("<QQQQ")
FLUSH, FORCED, DISCARD, MARK = 1, 2, 4, 8
SECTOR = 512  # the unit of an entry's offset and size


@dataclasses.dataclass
class Entry:
    flags: int
    offset: int   # on the disk, in bytes
    data: bytes
    mark: str

    def is_barrier(self):
        return bool(self.flags & (FLUSH | FORCED | MARK))


def entries(path):
    with open(path, "rb") as record:
        magic, version, count, size = HEADER.unpack(record.read(HEADER.size))
        if (magic, version) != (MAGIC, VERSION):
            raise ValueError(f"{path} is not a record of dm-log-writes")
        record.seek(size)
        for _ in range(count):
            yield read_entry(record, size)


def read_entry(record, sector_size):
    described = record.read(sector_size)
    sector, sectors, flags, mark_size = ENTRY.unpack_from(described)
    mark = described[ENTRY.size:ENTRY.size + mark_size].decode() if flags & MARK else ""
    # A discard has no data. It may be ignored by the disk, so the old content is kept.
    data = b"" if flags & DISCARD else record.read(sectors * SECTOR)
    return Entry(flags, sector * SECTOR, data, mark)
