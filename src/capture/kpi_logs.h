// SPDX-License-Identifier: Apache-2.0
// The KPI logs that are kept: the current and the previous one, each named by an index link, and
// the hand-off of finished ones to the DropBox. Paths are the phone's.
#pragma once

#include <stddef.h>
#include <time.h>

constexpr char kVornDirectory[] = "/data/vorn";
constexpr char kVornSuffix[] = ".log";

using VornPath = char[150];

struct KpiLogState {
  time_t handed_off = 0;  // when a log last went to the DropBox; 0: not known, no log is due by age
  // Whether the disk is known to hold the index links. A process cannot know that of the one before
  // it, which may have been killed before its sync.
  bool are_links_synced = false;
};

// Appends the finished temporary file to the current log, after a rotation when that is due by size
// or age, and deletes it. On a failure, which is logged, it stays, and the log is as it was before.
void vorn_update_current_log(const VornPath& temporary, KpiLogState& state);
