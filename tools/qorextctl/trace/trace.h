// SPDX-License-Identifier: Apache-2.0
// A recording as a timeline of parent, daemon and modem.
#pragma once

#include <vector>

#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Converts the events of a recording, as objects of its file and in their order, to Chrome trace
// events. The log identifies the daemon's threads: every line names its thread, and only
// threads that save the hand-off block log about it.
Json timeline(const std::vector<Json>& events);

// Reads the recording and writes its timeline to a file; "-" or "" is standard output.
Outcome write_trace(const std::string& path, const std::string& output, bool show_personal,
                    Printer& printer);

}  // namespace qorextctl
