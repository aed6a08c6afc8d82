// SPDX-License-Identifier: Apache-2.0
// A command line, run to its end.
#pragma once

#include <string>
#include <vector>

namespace e2e {

struct CommandResult {
  int status;          // -1 when it was ended by a signal, or not in time
  std::string output;  // standard output
  std::string errors;  // standard error
};

// Runs a line of the shell. "$BIN" in it is the folder of this build's executables.
CommandResult run_command(const std::string& line);

std::vector<std::string> lines_of(const std::string& text);

}  // namespace e2e
