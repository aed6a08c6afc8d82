// SPDX-License-Identifier: Apache-2.0
// The messages that come unsolicited: one row a message.
#pragma once

#include "tools/qorextctl/catalogue/request.h"

namespace qorextctl {

struct UnsolicitedMessage {
  uint32_t format;
  uint32_t id;  // the four id bytes as a little-endian number, in both formats
  const char* name;
  const Layout* layout;
};
std::span<const UnsolicitedMessage> unsolicited_messages();

}  // namespace qorextctl
