// SPDX-License-Identifier: Apache-2.0
// Runs a command.
#pragma once

#include "tools/qorextctl/cli/options.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Runs the command that the options contain. Returns the exit status.
int run(const Options& options, Printer& printer);

}  // namespace qorextctl
