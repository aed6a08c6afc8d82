// SPDX-License-Identifier: Apache-2.0
// Decodes frames and logs that were recorded elsewhere.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "tools/qorextctl/cli/options.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Decodes the hex words of one frame; without words, the lines of the input, each of which is the
// hex of a frame or a line of a log. Returns `refused` for a malformed frame, `usage` for bytes
// that are not a frame and for lines that are too long.
Outcome decode_input(const std::vector<std::string>& words, const DecodeOptions& options,
                     bool show_personal, Printer& printer);

// Decodes the lines of a stream in the same way.
Outcome decode_lines(std::istream& input, InputKind as, bool show_personal, Printer& printer);

}  // namespace qorextctl
