// The parser of the command line, for whoever takes it and whoever completes it.
#pragma once

#include <string>
#include <vector>

#include "cli.h"

namespace CLI {
class App;
}

namespace qorextctl {

// Adds every verb and option; what is parsed goes to `options`, which has to live as long.
void describe_command_line(CLI::App& app, Options& options);

// The values of an option that its checks do not tell; empty for all others.
std::vector<std::string> choices_of(const std::string& option);

}  // namespace qorextctl
