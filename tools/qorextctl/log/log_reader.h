// SPDX-License-Identifier: Apache-2.0
// Decodes and masks the daemon's log: hex dumps of frames and of modem data, NV items, and personal
// values in clear text.
#pragma once

#include <map>
#include <string_view>

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

struct LogEntry {
  std::string masked;  // the line with personal values and bytes masked
  std::optional<LogContent> content;
};

// Reads all lines of a log in order, because the content of a hex dump depends on the line before.
// Lines of other programs do not change. A dump of unknown content is masked completely.
class LogReader {
 public:
  LogEntry read(const std::string& line);

  // Called after a skipped line: the content of the next dumps is unknown.
  void forget() { states_.clear(); }

  // The state of one process or thread.
  struct State {
    Dump dump = Dump::unknown;
    std::optional<ItemAddress> address;  // of the item that is being read or written
  };

 private:
  std::map<std::string, State, std::less<>> states_;  // by source
};

}  // namespace qorextctl
