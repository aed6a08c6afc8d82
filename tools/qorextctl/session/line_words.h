// SPDX-License-Identifier: Apache-2.0
// The words of a session's line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qorextctl {

// Words in quotes may hold blanks; what begins with # is a comment. Nothing when a quote is not
// closed.
std::optional<std::vector<std::string>> split_line(const std::string& line);

}  // namespace qorextctl
