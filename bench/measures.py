"""The benchmarks by name. Each runs (everything measured, for the file) and tells its rows."""

import kpi

MEASURES = {
    "kpi": kpi,
}
