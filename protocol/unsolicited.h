// SPDX-License-Identifier: Apache-2.0
// The messages that come unsolicited: one row a message.
#pragma once

#include "protocol/request.h"

namespace protocol {

struct UnsolicitedMessage {
  uint32_t format;
  uint32_t id;  // the four id bytes as a little-endian number, in both formats
  const char* name;
  const Layout* layout;
};
std::span<const UnsolicitedMessage> unsolicited_messages();

// Null when there is none.
const UnsolicitedMessage* find_unsolicited(uint32_t format, uint32_t id);

}  // namespace protocol
