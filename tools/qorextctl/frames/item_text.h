// SPDX-License-Identifier: Apache-2.0
// What was decoded, for programs and for people.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// An object with a member an item; groups are arrays of objects.
Json to_json(const Items& items);
Json to_json(const DecodedFrame& frame);

// A line an item, and a line a record of a group.
std::string to_text(const Items& items);

}  // namespace qorextctl
