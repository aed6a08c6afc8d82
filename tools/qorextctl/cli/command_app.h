// SPDX-License-Identifier: Apache-2.0
// The command line parser, which completion uses too. The options must outlive the parser.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/cli/options.h"

namespace CLI {
class App;
}

namespace qorextctl {

// Adds all verbs and options. Parsing writes to `options`.
void describe_command_line(CLI::App& app, Options& options);

// Adds the verbs with their own options.
void add_verbs(CLI::App& app, Options& options);

// The value of --as with this name. An unknown name ends the parsing with an error.
InputKind input_named(const std::string& name);

// The names that an option such as "--color" accepts; empty for options that accept other values.
std::vector<std::string> choices_of(const std::string& option);

}  // namespace qorextctl
