// SPDX-License-Identifier: Apache-2.0
// Engineering records that count their bytes, and the replies' data that they become.
#pragma once

#include "tests/e2e/support/wire.h"

namespace e2e {

constexpr size_t kCallReply = 316;
constexpr size_t kEvdoReply = 144;

// The half-word at an offset of a record that counts its bytes.
constexpr uint32_t half(uint32_t offset) { return offset | (offset + 1) << 8; }

inline Bytes halves(uint32_t offset, int count) {
  Bytes bytes;
  for (int i = 0; i < count; ++i, offset += 2) bytes = bytes + le32(half(offset));
  return bytes;
}

inline Bytes call_record() {
  Bytes record = counting(164);
  record[38] = 0xF4;  // a transmit power below zero
  record[39] = 0xFF;
  return record;
}

inline Bytes call_data() {
  return words({0x03020100, half(16), half(18), half(20),  half(22),  half(24),
                half(26),   half(28), half(30), half(158), half(156), 0xFFFFFFF4,
                33,         12,       13,       14,        half(36),  half(160),
                34,         half(40), 0,        1,         32,        half(42)}) +
         halves(52, 6) + halves(64, 6) + halves(76, 40) +
         words({0x2F2E2D2C, 0x33323130, half(162)});
}

inline Bytes evdo_record() {
  Bytes record = counting(52);
  record[10] = 0xB9;  // levels below zero: the first is extended with zeros, the other is not
  record[11] = 0xFF;
  record[46] = 0xFA;
  record[47] = 0xFF;
  return record;
}

inline Bytes evdo_data() {
  return words({half(0), 2, 0x07060504, half(8), 0x0000FFB9, 0x0F0E0D0C, 0x13121110, half(20),
                half(22), 24, 25, 0, 26, 27, 0, 28}) +
         words({29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44}) +
         words({0xFFFFFFFA, 48, 49, 50});
}

}  // namespace e2e
