// SPDX-License-Identifier: Apache-2.0
// What lies in a phone's root after the daemon has worked there.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// The log directory's links and files, properties, DropBox entries, and whether the hand-off block
// has been saved.
Items phone_report(const std::string& root);

}  // namespace qorextctl
