// SPDX-License-Identifier: Apache-2.0
// Decoded fields and their types as JSON and as text.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// An object with one member per item. Groups are arrays of objects.
Json to_json(const Items& items);
Json to_json(const DecodedFrame& frame);

// One line per item, and one per record of a group.
std::string to_text(const Items& items);

// "u32", "6 u32", "4 bytes", "digits, 16 bytes": type and size. A size that varies is left out.
std::string type_text(const Field& field);

// The records of a group: "8 records of 127 bytes".
std::string type_text(const Group& group);

}  // namespace qorextctl
