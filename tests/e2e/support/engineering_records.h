// SPDX-License-Identifier: Apache-2.0
// Engineering records whose bytes count upwards, and the reply data that they become.
#pragma once

#include "tests/e2e/support/wire.h"

namespace e2e {

constexpr size_t kCallReply = 316;
constexpr size_t kEvdoReply = 144;

// The u16 at an offset of a record whose bytes count upwards.
constexpr uint32_t u16_at(uint32_t offset) { return offset | (offset + 1) << 8; }

inline Bytes u16_words(uint32_t offset, int count) {
  Bytes bytes;
  for (int i = 0; i < count; ++i, offset += 2) bytes = bytes + le32(u16_at(offset));
  return bytes;
}

inline Bytes call_record() {
  Bytes record = counting(164);
  record[38] = 0xF4;  // a negative transmit power
  record[39] = 0xFF;
  return record;
}

inline Bytes call_data() {
  return words({0x03020100, u16_at(16), u16_at(18), u16_at(20),  u16_at(22),  u16_at(24),
                u16_at(26), u16_at(28), u16_at(30), u16_at(158), u16_at(156), 0xFFFFFFF4,
                33,         12,         13,         14,          u16_at(36),  u16_at(160),
                34,         u16_at(40), 0,          1,           32,          u16_at(42)}) +
         u16_words(52, 6) + u16_words(64, 6) + u16_words(76, 40) +
         words({0x2F2E2D2C, 0x33323130, u16_at(162)});
}

inline Bytes evdo_record() {
  Bytes record = counting(52);
  record[10] = 0xB9;  // negative levels; only the second is sign-extended
  record[11] = 0xFF;
  record[46] = 0xFA;
  record[47] = 0xFF;
  return record;
}

inline Bytes evdo_data() {
  return words({u16_at(0), 2, 0x07060504, u16_at(8), 0x0000FFB9, 0x0F0E0D0C, 0x13121110, u16_at(20),
                u16_at(22), 24, 25, 0, 26, 27, 0, 28}) +
         words({29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44}) +
         words({0xFFFFFFFA, 48, 49, 50});
}

}  // namespace e2e
