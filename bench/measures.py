# SPDX-License-Identifier: Apache-2.0
"""The benchmarks by name. Each runs (everything measured, for the file) and tells its rows."""

import exchanges
import footprint
import instructions
import kpi
import latency
import parts
import qrtr

MEASURES = {
    "latency": latency,
    "exchanges": exchanges,
    "footprint": footprint,
    "instructions": instructions,
    "parts": parts,
    "kpi": kpi,
    "qrtr": qrtr,
}

# Needs more than a workstation's build.
ONLY_BY_NAME = {"qrtr"}
