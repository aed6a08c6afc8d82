// SPDX-License-Identifier: Apache-2.0
// Which of a session's lines hold what personal.h masks.
#pragma once

#include <string>

namespace qorextctl {

// Whether a line has to stay out of what is kept. Where it cannot be known, it has to.
bool is_private_line(const std::string& line);

}  // namespace qorextctl
