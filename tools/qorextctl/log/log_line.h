// SPDX-License-Identifier: Apache-2.0
// Lines of an Android log.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorextctl {

// A line of the daemon. The views live as long as the line.
struct DaemonLine {
  std::string_view head;    // date, process, priority, tag: everything in front of the text
  std::string_view source;  // process and, where the format tells it, thread
  char priority;            // V, D, I, W, E, F or S
  std::string_view text;    // without the line's end
};

// Nothing for lines that are not the daemon's. The formats are logcat's brief, time and threadtime
// (also with year, microseconds, zone or user), and what the log library writes to a terminal, in
// today's and in older releases.
std::optional<DaemonLine> parse_daemon_line(std::string_view line);

}  // namespace qorextctl
