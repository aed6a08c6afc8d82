// SPDX-License-Identifier: Apache-2.0
// Every command's work.
#pragma once

#include "tools/qorextctl/cli/options.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Does what the options say. Returns the exit status.
int run(const Options& options, Printer& printer);

}  // namespace qorextctl
