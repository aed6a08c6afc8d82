// SPDX-License-Identifier: Apache-2.0
// Numbers at any address of a buffer, in the byte order named.
#pragma once

#include <stdint.h>
#include <string.h>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "frames are kept in native order");

inline uint16_t load_le16(const uint8_t* from) {
  uint16_t value;
  memcpy(&value, from, sizeof value);
  return value;
}

inline uint32_t load_le32(const uint8_t* from) {
  uint32_t value;
  memcpy(&value, from, sizeof value);
  return value;
}

inline uint32_t load_be24(const uint8_t* from) {
  return uint32_t{from[0]} << 16 | uint32_t{from[1]} << 8 | from[2];
}

inline uint32_t load_be32(const uint8_t* from) {
  return uint32_t{from[0]} << 24 | load_be24(from + 1);
}

inline void store_le16(uint8_t* to, uint16_t value) { memcpy(to, &value, sizeof value); }

inline void store_le32(uint8_t* to, uint32_t value) { memcpy(to, &value, sizeof value); }
