// SPDX-License-Identifier: Apache-2.0
// Decodes and masks the daemon's log: hex dumps of frames and of modem data, NV items, and personal
// values in clear text.
#pragma once

#include <map>
#include <string_view>

#include "tools/qorextctl/log/log_dumps.h"

namespace qorextctl {

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
