// SPDX-License-Identifier: Apache-2.0
// The directory of the KPI logs: index links, dated logs, sweeps.
#pragma once

#include "src/capture/kpi_logs.h"

constexpr int kCurrentIndex = 1;
constexpr int kPreviousIndex = 2;

// Stores where index link k points to, empty when there is none. 0 when that exists, else -1.
int vorn_get_filename(int index, VornPath& target);

// Creates an empty log with the time as its name, makes it the current one and the current one the
// previous one, whose own predecessor is deleted. 0 with the name and the result of the links' sync
// stored, or -1 with nothing stored.
int vorn_create_new_log(VornPath& name, bool& are_links_synced);

// Lets the links as they are outlive a power failure. False after logging why not.
bool vorn_sync_links();

// Deletes everything but temporary files.
void vorn_reset_dir();

// Deletes what is neither of the two logs and was last changed 48 hours ago or more, or ahead.
void vorn_clean_dir();
