// SPDX-License-Identifier: Apache-2.0
// The commands of the command line.
#pragma once

#include "tools/qorextctl/cli/options.h"

namespace CLI {
class App;
}

namespace qorextctl {

// Adds the verbs with their options. Parsing writes to `options`, which must outlive the parser.
void add_verbs(CLI::App& app, Options& options);

}  // namespace qorextctl
