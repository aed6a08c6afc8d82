// SPDX-License-Identifier: Apache-2.0
// The files that the daemon has written in a phone root.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// Lists the log directory's links and files, the properties, the DropBox entries, and whether the
// hand-off block has been saved.
Items phone_report(const std::string& root);

}  // namespace qorextctl
