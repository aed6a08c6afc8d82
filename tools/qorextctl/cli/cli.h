// SPDX-License-Identifier: Apache-2.0
// The command line.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/cli/options.h"

namespace qorextctl {

// The options, a text to print (help, version, completion), or an error. `options.json` and
// `options.colour` are valid in all three cases.
struct Parsed {
  Options options;
  std::string text;
  bool is_text = false;
  std::optional<Error> error;
};
Parsed parse_command_line(int argc, const char* const* argv);

// The candidates for the last of the words, in the format of common/completion/command_line.h.
std::string complete_command_line(const std::vector<std::string>& words);

}  // namespace qorextctl
