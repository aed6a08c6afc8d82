// SPDX-License-Identifier: Apache-2.0
// What a program writes to its output and error channels, line by line. A thread reads all the
// time, so that the program never waits because nobody reads its log.
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
  // Called on the reading thread with every line, without its end.
  using Listener = std::function<void(const std::string&)>;

  // The same with the time at which the line was written: nanoseconds of the monotonic clock.
  using TimedListener = std::function<void(const std::string&, int64_t)>;

  // Only the last `most_lines` are kept.
  explicit LogCapture(Listener listener = {}, size_t most_lines = SIZE_MAX)
      : listener_(std::move(listener)), most_lines_(most_lines) {}
  // Waits for the end of the log: end the program first.
  ~LogCapture();

  // For a timed listener `input` comes from make_timed_pipe().
  void start(UniqueFd input, TimedListener listener = {});

  std::vector<std::string> lines() const;
  // True as soon as a line holds the text.
  bool wait_for(const std::string& text, Deadline deadline) const;
  // The number of the first line from number `first` on that holds the text, counted from 0;
  // nothing when there is none until the deadline or the log's end.
  std::optional<size_t> find(const std::string& text, size_t first, Deadline deadline) const;
  // Waits until the program has closed its output.
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
  size_t most_lines_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::deque<std::string> lines_;
  bool ended_ = true;
  std::thread reader_;
};

}  // namespace qorextctl
