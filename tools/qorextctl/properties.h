// The system properties of a phone's root, where the workstation's property library keeps them.
#pragma once

#include <optional>
#include <string>

#include "deadline.h"

namespace qorextctl {

// Nothing when the property is not set.
std::optional<std::string> read_property(const std::string& phone_root, const std::string& name);

// Waits until the property has this value; what it has at the end.
std::optional<std::string> wait_for_property(const std::string& phone_root, const std::string& name,
                                             const std::string& value, Deadline deadline);

}  // namespace qorextctl
