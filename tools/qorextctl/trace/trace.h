// SPDX-License-Identifier: Apache-2.0
// A recording as a timeline.
#pragma once

#include "tools/qorextctl/options/options.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Reads the recording and writes its timeline where the options say.
Outcome write_trace(const Options& options, Printer& printer);

}  // namespace qorextctl
