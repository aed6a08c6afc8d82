// SPDX-License-Identifier: Apache-2.0
// File descriptors that close themselves. Programs started later do not inherit them.
#pragma once

#include <csignal>
#include <optional>
#include <string>
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

// Returns nothing and sets errno on failure.
std::optional<Pipe> make_pipe();

// A pipe for LogCapture: each write is read separately, with the time at which it was made.
std::optional<Pipe> make_timed_pipe();

// Opens a file for writing, with mode 0600 also if it existed with another one. `flags` are added
// to those of open(2). Returns an invalid descriptor and sets errno on failure.
UniqueFd open_private(const std::string& path, int flags);

// Blocks SIGINT, SIGTERM and SIGHUP and makes them readable from a descriptor, so that a wait ends
// and destructors run. Signals that have not been taken are discarded at the end.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  int fd() const { return fd_.get(); }

  // Takes the pending signals. Returns whether all of them are SIGINT, as from Ctrl-C.
  bool take() const;

 private:
  sigset_t before_{};
  UniqueFd fd_;
};

}  // namespace qorextctl
