"""The benchmarks by name. Each runs (everything measured, for the file) and tells its rows."""

import instructions
import kpi
import latency

MEASURES = {
    "latency": latency,
    "instructions": instructions,
    "kpi": kpi,
}
