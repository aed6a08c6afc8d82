# SPDX-License-Identifier: Apache-2.0
"""KPI packages that can be recognized wherever they end up."""

import io
import random
import tarfile

FIRST = 100000  # so that every number has as many digits
SIZES = (40, 400, 1500, 4000, 12000)  # of content, at most; a packet carries 502 bytes
LETTERS = bytes(range(0x30, 0x7B))


def content(number):
    rng = random.Random(number)
    size = rng.randrange(1, rng.choice(SIZES))
    return b"<%d " % number + bytes(rng.choices(LETTERS, k=size)) + b" %d>" % number


def number_of(path):
    return int(path.rpartition("/")[2])


def write_archive(path, numbers):
    """The uploads of one run, a file a package."""
    with tarfile.open(path, "w", format=tarfile.USTAR_FORMAT) as archive:
        for number in numbers:
            data = content(number)
            entry = tarfile.TarInfo(str(number))
            entry.size = len(data)
            archive.addfile(entry, io.BytesIO(data))
