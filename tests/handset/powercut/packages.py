# SPDX-License-Identifier: Apache-2.0
"""KPI packages whose contents are unique."""

import io
import random
import tarfile

FIRST = 100000  # all numbers have the same number of digits
SIZES = (40, 400, 1500, 4000, 12000)  # upper limits of the content; a packet carries 502 bytes
LETTERS = bytes(range(0x30, 0x7B))


def content(number):
    rng = random.Random(number)
    size = rng.randrange(1, rng.choice(SIZES))
    return b"<%d " % number + bytes(rng.choices(LETTERS, k=size)) + b" %d>" % number


def number_of(path):
    return int(path.rpartition("/")[2])


def write_archive(path, numbers):
    """Writes the uploads of one run: one file for each package."""
    with tarfile.open(path, "w", format=tarfile.USTAR_FORMAT) as archive:
        for number in numbers:
            data = content(number)
            entry = tarfile.TarInfo(str(number))
            entry.size = len(data)
            archive.addfile(entry, io.BytesIO(data))
