// SPDX-License-Identifier: Apache-2.0
// A session at a terminal.
#pragma once

#include "tools/qorextctl/session/session.h"

namespace qorextctl {

// Lines from a person, with editing, history and completion, until Ctrl-D or the daemon's end;
// without a terminal a session as any other one. Returns the worst outcome of the latter, and of
// the former how the daemon ended.
Outcome run_shell(Session& session, Printer& printer);

}  // namespace qorextctl
