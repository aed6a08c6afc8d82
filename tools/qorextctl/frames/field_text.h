// SPDX-License-Identifier: Apache-2.0
// How fields lie in a payload, for people.
#pragma once

#include <string>

#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// "u32", "6 u32", "4 bytes", "digits, 16 bytes": type and size. A size that varies is left out.
std::string type_text(const Field& field);

// The records of a group: "8 records of 127 bytes".
std::string type_text(const Group& group);

}  // namespace qorextctl
