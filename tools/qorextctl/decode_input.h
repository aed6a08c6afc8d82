// SPDX-License-Identifier: Apache-2.0
// Frames and logs that were recorded elsewhere.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "tools/qorextctl/cli/options.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// `words` are the hex of one frame; without them lines are read, each the hex of a frame or a
// log's. Malformed frames are `refused`, bytes that are no frame `usage`; a log's dumps are shown
// as they are.
Outcome decode_input(const std::vector<std::string>& words, const DecodeOptions& options,
                     bool show_personal, Printer& printer);

// The same of lines from a stream.
Outcome decode_lines(std::istream& input, InputKind as, bool show_personal, Printer& printer);

}  // namespace qorextctl
