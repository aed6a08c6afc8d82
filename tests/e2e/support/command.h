// SPDX-License-Identifier: Apache-2.0
// Shell commands, and the text that they and files contain.
#pragma once

#include <string>
#include <vector>

namespace e2e {

struct CommandResult {
  int status;          // -1 after a signal or a timeout
  std::string output;  // standard output
  std::string errors;  // standard error
};

// Runs a shell command line to its end, with `input` as its standard input. "$BIN" in it is the
// folder of this build's executables.
CommandResult run_command(const std::string& line, const std::string& input = "");

// Runs qorextctl with these shell words.
inline CommandResult run_tool(const std::string& words, const std::string& input = "") {
  return run_command("$BIN/qorextctl " + words, input);
}

std::vector<std::string> lines_of(const std::string& text);

// Returns the whole file; an empty string if it does not exist.
std::string content_of(const std::string& path);

}  // namespace e2e
