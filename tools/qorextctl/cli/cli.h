// SPDX-License-Identifier: Apache-2.0
// The command line.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/options/options.h"

namespace qorextctl {

// The options, or the text that was asked for (help, version, completion), or what is wrong.
// Whether output is to be JSON, and its colour, is set in any case.
struct Parsed {
  Options options;
  std::string text;
  bool is_text = false;
  std::optional<Error> error;
};
Parsed parse_command_line(int argc, const char* const* argv);

// What may stand for the last word of a command line, as command_line.h tells it.
std::string complete_command_line(const std::vector<std::string>& words);

}  // namespace qorextctl
