#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Stores the inputs that fuzzing has found: one archive for each target.

corpora.py unpack FOLDER    writes each archive's inputs to FOLDER/TARGET
corpora.py pack FOLDER      creates the archives again from FOLDER/TARGET
"""

import sys
import zipfile
from pathlib import Path

ARCHIVES = Path(__file__).parent / "corpora"
SUFFIX = "_seed_corpus.zip"
FIRST_DAY = (1980, 1, 1, 0, 0, 0)


def unpack(folder):
    for archive in ARCHIVES.glob("*" + SUFFIX):
        with zipfile.ZipFile(archive) as inputs:
            inputs.extractall(folder / archive.name.removesuffix(SUFFIX))


def pack(folder):
    """The same inputs produce the same archive, byte for byte."""
    ARCHIVES.mkdir(exist_ok=True)
    for target in folder.iterdir():
        with zipfile.ZipFile(ARCHIVES / (target.name + SUFFIX), "w") as archive:
            for path in sorted(target.iterdir()):
                entry = zipfile.ZipInfo(path.name, FIRST_DAY)
                entry.compress_type = zipfile.ZIP_DEFLATED
                archive.writestr(entry, path.read_bytes())


ACTIONS = {"pack": pack, "unpack": unpack}

if __name__ == "__main__":
    if len(sys.argv) != 3 or sys.argv[1] not in ACTIONS:
        sys.exit(__doc__)
    ACTIONS[sys.argv[1]](Path(sys.argv[2]))
