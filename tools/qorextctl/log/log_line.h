// SPDX-License-Identifier: Apache-2.0
// The lines of an Android log.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorextctl {

// A line of the daemon. The views refer to the parsed line.
struct DaemonLine {
  std::string_view head;    // date, process, priority, tag: everything before the text
  std::string_view source;  // the process, and the thread if the format has it
  char priority;            // V, D, I, W, E, F or S
  std::string_view text;    // without the line's end
};

// Returns nothing for lines that are not the daemon's. Accepts logcat's formats brief, time and
// threadtime (also with year, microseconds, zone or user), and the formats that the log library
// writes to a terminal, in current and older releases.
std::optional<DaemonLine> parse_daemon_line(std::string_view line);

}  // namespace qorextctl
