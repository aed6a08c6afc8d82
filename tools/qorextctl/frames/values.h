// SPDX-License-Identifier: Apache-2.0
// Encodes the values of arguments, which are text, to bytes.
#pragma once

#include <string>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

struct Encoded {
  Bytes bytes;
  size_t count = 0;  // of bytes, characters, numbers or pairs
};

// The bytes of an argument's value. An error starts with the argument's name.
Result<Encoded> encode(const Argument& argument, const std::string& text);

// What an argument accepts: "0 to 255", "6 characters", "hex bytes".
std::string describe(const Argument& argument);

// The number that is the whole text, decimal or with 0x; else nothing.
std::optional<int64_t> parse_number(std::string_view text);

}  // namespace qorextctl
