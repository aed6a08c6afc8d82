// SPDX-License-Identifier: Apache-2.0
// A session at a terminal.
#pragma once

#include "tools/qorextctl/session/session.h"

namespace qorextctl {

// Reads lines with editing, history and completion until Ctrl-D or the end of the daemon. Without a
// terminal it runs standard input as a session and returns the worst outcome.
Outcome run_shell(Session& session, Printer& printer);

}  // namespace qorextctl
