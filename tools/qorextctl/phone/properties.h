// SPDX-License-Identifier: Apache-2.0
// The system properties of a phone's root, where the workstation's property library keeps them.
#pragma once

#include <optional>
#include <string>

namespace qorextctl {

// Nothing when the property is not set.
std::optional<std::string> read_property(const std::string& phone_root, const std::string& name);

}  // namespace qorextctl
