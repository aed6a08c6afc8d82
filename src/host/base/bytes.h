// SPDX-License-Identifier: Apache-2.0
// Bytes at any address of a buffer: as numbers of a stated byte order, as a structure, as
// upper-case hexadecimal text.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "frames are kept in native order");

// Copies a structure out of a buffer that holds all of it. Buffers are byte arrays without
// alignment; a pointer cast would be undefined.
template <typename Value>
Value load(const uint8_t* from) {
  Value value;
  memcpy(&value, from, sizeof value);
  return value;
}

inline uint16_t load_le16(const uint8_t* from) { return load<uint16_t>(from); }
inline uint32_t load_le32(const uint8_t* from) { return load<uint32_t>(from); }

inline uint32_t load_be24(const uint8_t* from) {
  return uint32_t{from[0]} << 16 | uint32_t{from[1]} << 8 | from[2];
}

inline uint32_t load_be32(const uint8_t* from) {
  return uint32_t{from[0]} << 24 | load_be24(from + 1);
}

inline void store_le16(uint8_t* to, uint16_t value) { memcpy(to, &value, sizeof value); }
inline void store_le32(uint8_t* to, uint32_t value) { memcpy(to, &value, sizeof value); }

constexpr size_t kHexDumpLimit = 1024;

// Logs the bytes as one line; for more than kHexDumpLimit logs an error line instead.
void hexDump(const void* buffer, size_t length);

// Writes two digits a byte and a NUL: `text` needs room for 2 * length + 1 characters.
void toHexString(size_t length, const void* buffer, char* text);
