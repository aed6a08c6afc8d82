"""The benchmarks by name. Each runs (everything measured, for the file) and tells its rows."""

import kpi
import latency

MEASURES = {
    "latency": latency,
    "kpi": kpi,
}
