// SPDX-License-Identifier: Apache-2.0
// The KPI logs on disk: the current and the previous one, each named by an index link, and the
// hand-off of finished logs to the DropBox. Paths are the phone's.
#pragma once

#include <stddef.h>
#include <time.h>

constexpr char kVornDirectory[] = "/data/vorn";
constexpr char kVornSuffix[] = ".log";

using VornPath = char[150];

struct KpiLogState {
  time_t handed_off = 0;  // when a log was last handed off; 0: not known, no log is due by age
  // Whether the index links are known to be on the disk. A new process cannot know it: the one
  // before may have been killed before its sync.
  bool are_links_synced = false;
};

// Appends the finished temporary file to the current log, after a rotation when that is due by size
// or age, and deletes it. On a failure, which is logged, the file stays and the log is unchanged.
void vorn_update_current_log(const VornPath& temporary, KpiLogState& state);

constexpr int kCurrentIndex = 1;
constexpr int kPreviousIndex = 2;

// Stores the target of an index link, empty when there is none. Returns 0 when the target exists,
// else -1.
int vorn_get_filename(int index, VornPath& target);

// Creates an empty log named by the time. The new log becomes the current one, the current one the
// previous one, and the previous one is deleted. Returns 0 with the name and the result of syncing
// the links stored, or -1 with nothing stored.
int vorn_create_new_log(VornPath& name, bool& are_links_synced);

// Syncs the links, which then survive a power failure. Returns false after logging the failure.
bool vorn_sync_links();

// Deletes everything but temporary files.
void vorn_reset_dir();

// Deletes each file that is neither of the two logs and was last modified 48 hours or more before
// or after the current time. Names that begin with a dot are skipped.
void vorn_clean_dir();
