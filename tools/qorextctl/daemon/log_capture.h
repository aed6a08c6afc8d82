// SPDX-License-Identifier: Apache-2.0
// Captures the lines that a program writes to its standard output and error. A thread reads them,
// so that the program never blocks on a full pipe.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

class LogCapture {
 public:
  // Called on the reading thread for each line, without its end.
  using Listener = std::function<void(const std::string&)>;

  // Also gets the time at which the line was written, in nanoseconds of the monotonic clock.
  using TimedListener = std::function<void(const std::string&, int64_t)>;

  // Keeps the last `max_lines` lines.
  explicit LogCapture(Listener listener = {}, size_t max_lines = SIZE_MAX)
      : listener_(std::move(listener)), max_lines_(max_lines) {}
  // Waits for the end of the log, so the program must have ended.
  ~LogCapture();

  // A timed listener needs an `input` from make_timed_pipe().
  void start(UniqueFd input, TimedListener listener = {});

  std::vector<std::string> lines() const;
  // Waits until a line contains the text. Returns false at the deadline or the log's end.
  bool wait_for(const std::string& text, Deadline deadline) const;
  // Returns the index of the first line from index `first` that contains the text, or nothing at
  // the deadline or the log's end.
  std::optional<size_t> find(const std::string& text, size_t first, Deadline deadline) const;
  // Waits until the program has closed its output. Returns false at the deadline.
  bool wait_end(Deadline deadline) const;

 private:
  struct Chunk {
    ssize_t size;
    int64_t time;
  };
  Chunk read_some(const UniqueFd& input, std::span<char> buffer) const;
  void read_all(const UniqueFd& input);
  void add(const std::string& line, int64_t time);

  Listener listener_;
  TimedListener timed_listener_;
  size_t max_lines_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::deque<std::string> lines_;
  bool ended_ = true;
  std::thread reader_;
};

}  // namespace qorextctl
