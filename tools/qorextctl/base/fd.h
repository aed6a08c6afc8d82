// SPDX-License-Identifier: Apache-2.0
// Descriptors that close themselves. None is inherited by programs started later.
#pragma once

#include <optional>
#include <utility>

namespace qorextctl {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept;
  ~UniqueFd() { reset(); }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  void reset();

 private:
  int fd_ = -1;
};

struct Pipe {
  UniqueFd read;
  UniqueFd write;
};

// Nothing when the system has no more descriptors (errno tells).
std::optional<Pipe> make_pipe();

// The same for log_capture.h: every write is noted with its time, and read by itself.
std::optional<Pipe> make_timed_pipe();

}  // namespace qorextctl
