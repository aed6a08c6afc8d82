// Options whose values are names.
#pragma once

#include <string>
#include <vector>

#include "options/options.h"

namespace qorextctl {

// The value that goes by the name. Throws CLI::ValidationError, which tells the names that there
// are.
ColourWhen colour_named(const std::string& name);
InputKind input_named(const std::string& name);

// The names that an option takes, as "--color"; empty for all others.
std::vector<std::string> choices_of(const std::string& option);

}  // namespace qorextctl
