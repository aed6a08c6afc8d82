// SPDX-License-Identifier: Apache-2.0
// Replies of the carrier handler. They reuse a header as it stands: a 20-byte structure of which
// the last two bytes are padding, while the data begins at 18. That is meant.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/host/base/framing.h"
#include "src/vendor/rde_messages.h"

constexpr uint32_t kStatusModemRefused = 2;
constexpr uint32_t kStatusSubsidyLockRefused = 3;

constexpr uint32_t kMaxCarrierData = 1044;  // a general item read of 1024 bytes

// What an operation has to say, besides its status.
struct CarrierReply {
  uint32_t length = 0;
  uint8_t data[kMaxCarrierData] = {};
};

inline void put_le32(CarrierReply& reply, uint32_t value) {
  store_le32(reply.data + reply.length, value);
  reply.length += sizeof value;
}

inline void put_bytes(CarrierReply& reply, const void* bytes, uint32_t size) {
  memcpy(reply.data + reply.length, bytes, size);
  reply.length += size;
}

// The reply status for a modem operation's own: 0 is success, 5 a refusal, the rest failures.
constexpr uint32_t status_from_modem(uint32_t result) {
  if (result == 0) return kStatusSuccess;
  return result == 5 ? kStatusModemRefused : kStatusFailure;
}

// Writes the first 20 bytes of `header` (its length field tells the data's length L), the data from
// byte 18 when there is any, and zeros up to L + 20 bytes. 1 when the frame was handed to the
// reply pipe; 0 when the header is null or there is no memory.
uint32_t qorext_hook_sprint_send_response(const uint8_t* header, const uint8_t* data);
