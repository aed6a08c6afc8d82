# SPDX-License-Identifier: Apache-2.0
"""Reads what the kernel's dm-log-writes has recorded of the writes to a disk.

The record begins with a sector that gives the number of entries; each entry is a sector that
describes it, and the sectors that were written. All numbers are little-endian. Writes that were not
flushed are recorded with the flush that follows them, so every prefix of the record that ends in a
flush, a forced write or a mark is what is on the medium for sure at that time.
"""

import dataclasses
import struct

MAGIC, VERSION = 0x6A736677736872, 1
HEADER = struct.Struct("<QQQI")
ENTRY = struct.Struct("<QQQQ")
FLUSH, FORCED, DISCARD, MARK = 1, 2, 4, 8
SECTOR = 512  # the unit of an entry's place and size


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
    # A discard has no data. That it took place is not certain, so the old content stays.
    data = b"" if flags & DISCARD else record.read(sectors * SECTOR)
    return Entry(flags, sector * SECTOR, data, mark)
