// SPDX-License-Identifier: Apache-2.0
// Encodes and decodes messages by their descriptions. Reads and writes nothing outside the given
// spans: lengths and counts on the wire are not trusted.
#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <optional>
#include <span>

#include "platform/linux/qmi_idl/descriptor.h"

namespace qmi_idl {

// Numbers of 1 to 8 bytes, little-endian: on the wire, and in structures on supported machines.
inline uint64_t load_number(const uint8_t* from, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) value |= uint64_t{from[i]} << (8 * i);
  return value;
}
inline void store_number(uint8_t* to, size_t width, uint64_t value) {
  for (size_t i = 0; i < width; ++i) to[i] = static_cast<uint8_t>(value >> (8 * i));
}
inline uint64_t sign_extend(uint64_t value, size_t width) {
  if (width == 0) return value;  // bytes, which have no sign
  uint64_t sign = uint64_t{1} << (8 * width - 1);
  return (value ^ sign) - sign;
}

// The number of an element's numbers in a structure. Not bounded by the capacity.
size_t count_in(const Shape& shape, const uint8_t* structure);

// The header before every QMI message on QRTR and on the Unix socket: u8 type, u16 transaction,
// u16 message id, u16 length of the TLVs that follow; little-endian, unaligned.
constexpr size_t kHeaderSize = 7;

enum class WireType : uint8_t { request = 0, response = 2, indication = 4 };

struct Header {
  WireType type;
  uint16_t transaction;
  uint16_t message_id;
  uint16_t length;
};

void store_header(const Header& header, std::span<uint8_t, kHeaderSize> out);

// Returns nullopt when the packet is shorter than a header, has an unknown type, or its TLVs do not
// have exactly the length in the header.
std::optional<Header> load_header(std::span<const uint8_t> packet);

// Encodes the structure, which has message.size bytes, as TLVs. Returns the number of bytes
// written, or -1 when a count exceeds its capacity or the output is too small.
ssize_t encode(const Message& message, std::span<const uint8_t> structure, std::span<uint8_t> wire);

// Decodes TLVs into the structure, which has message.size bytes and is zeroed first. Skips unknown
// TLVs and bytes after the known elements of a TLV. A mandatory TLV may be missing only when the
// message's result reports a failure. False when the bytes do not match the description; the
// structure's content is then unspecified.
bool decode(const Message& message, std::span<const uint8_t> wire, std::span<uint8_t> structure);

}  // namespace qmi_idl
