// SPDX-License-Identifier: Apache-2.0
// The daemon's log, with what its lines hold: hex dumps of frames and of modem data, NV items,
// personal values in clear.
#pragma once

#include <map>
#include <string_view>

#include "tools/qorextctl/log/log_dumps.h"

namespace qorextctl {

struct LogEntry {
  std::string masked;  // the line with personal values and bytes masked
  std::optional<LogContent> content;
};

// Takes a log line by line, because a line says what the next one's hex dump is. Lines of other
// programs pass as they are. A dump of which nothing is known is masked wholly.
class LogReader {
 public:
  LogEntry read(const std::string& line);

  // After a line that could not be read: of no dump is anything known then.
  void forget() { states_.clear(); }

  // Of one process or thread.
  struct State {
    Dump dump = Dump::unknown;
    std::optional<ItemAddress> address;  // of the item that is being read or written
  };

 private:
  std::map<std::string, State, std::less<>> states_;  // by source
};

}  // namespace qorextctl
