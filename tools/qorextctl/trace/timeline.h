// SPDX-License-Identifier: Apache-2.0
// What happened, as a timeline of parent, daemon and modem.
#pragma once

#include <vector>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// From the events of a recording as they stand in its file, in their order. Which thread of the
// daemon did something is told by its log: every line names its thread, and only the threads that
// save the hand-off block speak of it.
Json timeline(const std::vector<Json>& events);

}  // namespace qorextctl
