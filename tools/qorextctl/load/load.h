// SPDX-License-Identifier: Apache-2.0
// Many requests at a given rate.
#pragma once

#include "tools/qorextctl/load/load_mix.h"
#include "tools/qorextctl/load/load_options.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

// What the options say, or what is wrong with them; nothing is started for it.
Result<Mix> mix_of(const LoadOptions& options);

// Sends the requests and prints how long they took. Request number i is due i/rate seconds after
// the first one, whether or not those before it have been answered; the daemon takes one at a time,
// so those that are due meanwhile wait, and their latency counts. Without a rate each request is
// due when the one before it has been answered.
Outcome run_load(Session& session, const LoadOptions& options, const Mix& mix, Printer& printer);

}  // namespace qorextctl
