// SPDX-License-Identifier: Apache-2.0
// What the bytes in the daemon's log are.
#pragma once

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// What a hex dump shows.
enum class Dump { unknown, reply, nv_item, data_plmn, tuner, call_processing, evdo };

// Where bytes of an NV item lie.
struct ItemAddress {
  uint32_t item;
  uint32_t record;
  uint32_t offset;
};

struct LogContent {
  const char* type;  // "reply", "nv-item", "modem-response", "engineering"
  DecodedFrame frame;
};

// Nothing where there are no bytes, or nobody knows what they are. Of an item without an address
// nobody knows.
std::optional<LogContent> decode_dump(Dump dump, const std::optional<ItemAddress>& address,
                                      const Bytes& bytes);

LogContent decode_item(const ItemAddress& address, const Bytes& bytes);

}  // namespace qorextctl
