// SPDX-License-Identifier: Apache-2.0
// Frames as the daemon writes them, for the tests of their decoders.
#pragma once

#include "tools/qorextctl/base/bytes.h"

namespace qorextctl {

inline Bytes from_hex(const std::string& text) { return *parse_hex(text); }

// A CDMA-hook reply: header, data, two zero bytes.
inline Bytes cdma_frame(uint32_t id, uint32_t status, const Bytes& data) {
  Bytes frame;
  append_le(frame, id, 4);
  append_le(frame, static_cast<uint32_t>(data.size()), 4);
  append_le(frame, status, 4);
  frame.insert(frame.end(), 6, 0);
  frame.insert(frame.end(), data.begin(), data.end());
  frame.insert(frame.end(), 2, 0);
  return frame;
}

// A generic reply: the request's type and id, the length, data.
inline Bytes generic_frame(uint32_t id, const Bytes& data) {
  Bytes frame{1};
  append_be(frame, id, 3);
  append_le(frame, static_cast<uint32_t>(data.size()), 4);
  frame.insert(frame.end(), data.begin(), data.end());
  return frame;
}

// An unsolicited frame of format 0.
inline Bytes cdma_unsolicited(uint32_t id, const Bytes& data) {
  Bytes frame;
  append_le(frame, 0, 4);
  append_le(frame, 20, 4);
  Bytes inner = cdma_frame(id, 0, data);
  frame.insert(frame.end(), inner.begin(), inner.end());
  return frame;
}

// An unsolicited frame of format 1.
inline Bytes generic_unsolicited(uint32_t id, const Bytes& data) {
  Bytes frame;
  append_le(frame, 1, 4);
  append_le(frame, 8, 4);
  append_le(frame, id, 4);
  append_le(frame, static_cast<uint32_t>(data.size()), 4);
  frame.insert(frame.end(), data.begin(), data.end());
  frame.insert(frame.end(), 12, 0);
  return frame;
}

// `size` bytes, counting up from 1, so that no two fields are equal.
inline Bytes counting(size_t size) {
  Bytes bytes;
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(i + 1));
  return bytes;
}

}  // namespace qorextctl
