// SPDX-License-Identifier: Apache-2.0
// Many requests at a given rate.
#pragma once

#include "tools/qorextctl/load/load_mix.h"
#include "tools/qorextctl/load/load_options.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

// Returns the mix that the options name, or what is wrong with it.
Result<Mix> mix_of(const LoadOptions& options);

// Sends the requests and prints how long they took. Request i is due i/rate seconds after the first
// one, also when earlier ones have no reply yet: the daemon serves one at a time, and the latency
// of the others includes their wait. Without a rate, requests are consecutive.
Outcome run_load(Session& session, const LoadOptions& options, const Mix& mix, Printer& printer);

}  // namespace qorextctl
