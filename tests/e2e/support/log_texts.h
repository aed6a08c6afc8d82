// SPDX-License-Identifier: Apache-2.0
// What the daemon logs around every CDMA-hook request.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <vector>

namespace e2e {

using Texts = std::vector<std::string>;

inline Texts operator+(Texts left, const Texts& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// Until the carrier handler has looked at the request.
inline Texts received(uint32_t id, size_t size) {
  return {
      fmt::format("Read {} bytes from pipe", size), fmt::format("msg Id is {:#x}, type is 0. ", id),
      fmt::format("Received CDMA Hook request {:#x}", id), "qorext_hook_sprint_handler: ENTER "};
}

// The carrier handler's reply goes out.
inline Texts sent(uint32_t reply_id, size_t length) {
  std::string sender = "qorext_hook_sprint_send_response: ";
  Texts texts = {sender + fmt::format("ENTER FUNCTION {} ", reply_id),
                 sender + fmt::format("SEND RESPONSE TO APP LAYER Message ID {} ", reply_id),
                 sender + fmt::format("SEND RESPONSE TO APP LAYER Length {} ", length)};
  if (length != 0) texts.push_back(sender + "BYTE ARRAY NOT NULL ");
  texts.push_back(sender + fmt::format("HEADER ID {} ", reply_id));
  return texts;
}

inline Texts handled(uint32_t id) {
  return {fmt::format("{:#x} is handled by Sprint handler.", id)};
}

inline Texts answered(uint32_t id, size_t length) { return sent(id, length) + handled(id); }

// Neither the carrier handler nor the table behind it serves the request.
inline Texts not_supported(uint32_t id) {
  return {fmt::format("{:#x} not supported by Sprint handler.", id),
          fmt::format("{:#x} not supported", id)};
}

// The carrier handler does not serve the request.
inline Texts declined(uint32_t id) {
  return {fmt::format("qorext_hook_sprint_handler: Unexpected MSG ID: {}", id),
          fmt::format("{:#x} not supported by Sprint handler.", id)};
}

}  // namespace e2e
