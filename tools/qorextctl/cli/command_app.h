// SPDX-License-Identifier: Apache-2.0
// The parser of the command line, for whoever takes it and whoever completes it.
#pragma once

#include <string>

#include "tools/qorextctl/options/options.h"

namespace CLI {
class App;
}

namespace qorextctl {

// Adds every verb and option; what is parsed goes to `options`, which has to live as long.
void describe_command_line(CLI::App& app, Options& options);

// Ends the parsing: the option does not take what it was given.
[[noreturn]] void refuse_value(const char* option, const std::string& why);

}  // namespace qorextctl
