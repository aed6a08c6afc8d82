// SPDX-License-Identifier: Apache-2.0
// The daemon's log messages in their order.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/base/deadline.h"

namespace e2e {

class DaemonLog {
 public:
  // A line of the daemon's output. What is no log message is kept apart, and so are messages below
  // the error priority: not every release of the log library shows them.
  void add(const std::string& line);

  // The messages from number `first` to before number `end`, without line ends. The daemon's last
  // ones may still be on their way: wait for one, or for one behind it.
  std::vector<std::string> texts(size_t first = 0, size_t end = SIZE_MAX) const;

  // The number of the first message with this text, counted from `first`; waits for it.
  std::optional<size_t> wait_for(const std::string& text, size_t first,
                                 qorextctl::Deadline deadline) const;

  // What is kept apart, such as messages of the phone's libraries, as it was written.
  std::vector<std::string> other_lines() const;

  // Everything, for a person who looks into a failure.
  std::string describe() const;

 private:
  std::optional<size_t> find(const std::string& text, size_t first) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::string> messages_;
  std::vector<std::string> other_lines_;
};

}  // namespace e2e
