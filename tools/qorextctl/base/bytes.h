// SPDX-License-Identifier: Apache-2.0
// Numbers in byte sequences, and byte sequences as text.
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

// Reads `width` bytes (at most 4) at `offset`. Bytes after the end count as zero.
uint32_t load_le(View bytes, size_t offset, size_t width);
uint32_t load_be(View bytes, size_t offset, size_t width);

// Appends the low `width` bytes of the value.
void append_le(Bytes& bytes, uint32_t value, size_t width);
void append_be(Bytes& bytes, uint32_t value, size_t width);

bool all_zero(View bytes);

// Returns `size` bytes from `offset`, or fewer if the bytes end earlier.
View part(View bytes, size_t offset, size_t size);

// Returns upper-case digits without separators.
std::string to_hex(View bytes);

// Parses pairs of hex digits and skips blanks and colons between pairs. Returns nothing for any
// other text.
std::optional<Bytes> parse_hex(std::string_view text);

// Escapes control characters as \xNN, and also all bytes from 0x80 unless the whole text is valid
// UTF-8.
std::string printable(View text);
std::string printable(std::string_view text);

// Shortens a text for an error message: the first 200 bytes, printable, and "..." for the rest.
std::string beginning_of(std::string_view text);

}  // namespace qorextctl
