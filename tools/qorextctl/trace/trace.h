// SPDX-License-Identifier: Apache-2.0
// A recording as a timeline.
#pragma once

#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Reads the recording and writes its timeline to a file; "-" or "" is standard output.
Outcome write_trace(const std::string& path, const std::string& output, bool show_personal,
                    Printer& printer);

}  // namespace qorextctl
