// SPDX-License-Identifier: Apache-2.0
// Options whose values are names.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/options/options.h"

namespace qorextctl {

// The value that goes by the name. Without one the command line is refused, and told which names
// there are.
ColourWhen colour_named(const std::string& name);
InputKind input_named(const std::string& name);

// The names that an option takes, as "--color"; empty for all others.
std::vector<std::string> choices_of(const std::string& option);

}  // namespace qorextctl
