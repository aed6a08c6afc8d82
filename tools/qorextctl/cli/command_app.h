// The parser of the command line, for whoever takes it and whoever completes it.
#pragma once

#include "options/options.h"

namespace CLI {
class App;
}

namespace qorextctl {

// Adds every verb and option; what is parsed goes to `options`, which has to live as long.
void describe_command_line(CLI::App& app, Options& options);

}  // namespace qorextctl
