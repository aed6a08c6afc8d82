// SPDX-License-Identifier: Apache-2.0
// The commands of the command line, each with its options.
#pragma once

#include "tools/qorextctl/options/options.h"

namespace CLI {
class App;
}

namespace qorextctl {

// What is parsed goes to `options`, which has to live as long as the parser.
void add_verbs(CLI::App& app, Options& options);

}  // namespace qorextctl
