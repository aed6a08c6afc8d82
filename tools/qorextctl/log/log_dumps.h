// SPDX-License-Identifier: Apache-2.0
// Decodes the bytes in the daemon's log.
#pragma once

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// The content of a hex dump.
enum class Dump { unknown, reply, nv_item, data_plmn, tuner, call_processing, evdo };

// The position of bytes in an NV item.
struct ItemAddress {
  uint32_t item;
  uint32_t record;
  uint32_t offset;
};

struct LogContent {
  const char* type;  // "reply", "nv-item", "modem-response", "engineering"
  DecodedFrame frame;
};

// Returns nothing if there are no bytes or their content is unknown. Bytes of an NV item are
// unknown without an address.
std::optional<LogContent> decode_dump(Dump dump, const std::optional<ItemAddress>& address,
                                      const Bytes& bytes);

LogContent decode_item(const ItemAddress& address, const Bytes& bytes);

}  // namespace qorextctl
