// SPDX-License-Identifier: Apache-2.0
// The replay of a recording.
#pragma once

#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Starts the daemon with a modem that answers from the recording, sends the recorded requests and
// prints the differences. Returns `refused` when there are any, `usage` for a file that cannot be
// replayed.
Outcome replay(const std::string& path, const LaunchOptions& options, bool show_personal,
               Printer& printer);

}  // namespace qorextctl
