// SPDX-License-Identifier: Apache-2.0
// A daemon process and its log.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/support/phone_root.h"
#include "tests/e2e/support/wait.h"
#include "tools/qorextctl/daemon/daemon.h"

namespace e2e {

// Starts the daemon on this phone and, unless the options name another, this phone's modem.
std::unique_ptr<qorextctl::Daemon> start_daemon(const PhoneRoot& phone,
                                                qorextctl::DaemonOptions options);

// Return the next unsolicited message or CDMA-hook reply, as_hex(), or "nothing" after the timeout.
std::string next_message(qorextctl::Daemon& daemon);
std::string next_reply(qorextctl::Daemon& daemon);

// Waits for the end of the daemon: "exit status 0", "signal 9 (Killed)", "still running".
std::string exit_status_of(qorextctl::Daemon& daemon);

// A limit for runs of so many requests that the whole log would fill the memory.
constexpr size_t kLastLogLines = 200;

// The daemon's log messages in their order.
class DaemonLog {
 public:
  // Takes one line of the daemon's output. Lines that are not log messages are kept separately, and
  // so are messages below the error priority: not every release of the log library shows them.
  void add(const std::string& line);

  // Returns the messages from number `first` to before number `end`, without line ends. The last
  // messages can still be on their way; wait for one of them first.
  std::vector<std::string> texts(size_t first = 0, size_t end = SIZE_MAX) const;
  size_t size() const;

  // Waits for a message with this text from number `first` on. Returns its number.
  std::optional<size_t> wait_for(const std::string& text, size_t first = 0,
                                 Deadline deadline = time_limit()) const;

  // The lines that are kept separately, such as messages of the phone's libraries.
  std::vector<std::string> other_lines() const;

  // Everything, for failure messages.
  std::string describe() const;

 private:
  std::optional<size_t> find(const std::string& text, size_t first) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::string> messages_;
  std::vector<std::string> other_lines_;
};

}  // namespace e2e
