// The KPI logs that are kept: the current and the previous one, each named by an index link, and
// the hand-off of finished ones to the DropBox. Paths are the phone's.
#pragma once

#include <stddef.h>
#include <time.h>

constexpr char kVornDirectory[] = "/data/vorn";
constexpr char kVornSuffix[] = ".log";

using VornPath = char[150];

// Appends the finished temporary file to the current log, after a rotation when that is due by size
// or age, and deletes it. On a failure, which is logged, it stays. `handed_off` is when a log last
// went to the DropBox; while it is 0 the age is not known and begins to be counted.
void vorn_update_current_log(const VornPath& temporary, time_t& handed_off);
