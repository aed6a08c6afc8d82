// SPDX-License-Identifier: Apache-2.0
// Values as people write them, and the bytes that stand for them.
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

// The bytes of an argument's value; on failure the reason, with the argument's name.
Result<Encoded> encode(const Argument& argument, const std::string& text);

// What an argument accepts, for the list of requests: "u8", "6 characters", "hex".
std::string describe(const Argument& argument);

// A whole text that is a number, decimal or with 0x.
std::optional<int64_t> parse_number(std::string_view text);

}  // namespace qorextctl
