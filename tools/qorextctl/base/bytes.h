// SPDX-License-Identifier: Apache-2.0
// Numbers in byte strings, and byte strings as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qorextctl {

using Bytes = std::vector<uint8_t>;
using View = std::span<const uint8_t>;

struct ByteRange {
  size_t offset;
  size_t size;
};

// The `width` bytes (at most 4) at `offset`; bytes behind the end count as zero.
uint32_t load_le(View bytes, size_t offset, size_t width);
uint32_t load_be(View bytes, size_t offset, size_t width);

// Appends the low `width` bytes of the value.
void append_le(Bytes& bytes, uint32_t value, size_t width);
void append_be(Bytes& bytes, uint32_t value, size_t width);

bool all_zero(View bytes);

// At most `size` bytes from `offset`; fewer, or none, where the bytes end before.
View part(View bytes, size_t offset, size_t size);

// Upper-case digits without separators.
std::string to_hex(View bytes);

// Pairs of hex digits, blanks and colons between them passed over; nothing for any other text.
std::optional<Bytes> parse_hex(std::string_view text);

// Text for a person and for JSON: UTF-8 stays, control characters become \xNN, and so do all bytes
// from 0x80 where the whole is no UTF-8.
std::string printable(View text);
std::string printable(std::string_view text);

// The same of the first 200 bytes, and "..." for the rest: for an error's text.
std::string beginning_of(std::string_view text);

}  // namespace qorextctl
