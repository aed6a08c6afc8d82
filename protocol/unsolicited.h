// SPDX-License-Identifier: Apache-2.0
// The unsolicited messages: one row per message.
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

// Null when no row matches.
const UnsolicitedMessage* find_unsolicited(uint32_t format, uint32_t id);

}  // namespace protocol
