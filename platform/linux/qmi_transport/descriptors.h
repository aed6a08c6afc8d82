// SPDX-License-Identifier: Apache-2.0
// Descriptors: ownership, epoll, a timer, and accepting connections.
#pragma once

#include <errno.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <utility>

namespace qmi_transport {

// Owns a descriptor. Closing it preserves errno.
class ScopedFd {
 public:
  ScopedFd() = default;
  explicit ScopedFd(int fd) : fd_(fd) {}
  ScopedFd(ScopedFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  ScopedFd& operator=(ScopedFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ScopedFd(const ScopedFd&) = delete;
  ScopedFd& operator=(const ScopedFd&) = delete;
  ~ScopedFd() {
    int saved = errno;
    if (fd_ >= 0) close(fd_);
    errno = saved;
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

// Adds a descriptor for reading; its events carry the key. False on failure (errno is set).
bool add_to_epoll(int epoll, int fd, uint64_t key);

// Replaces the events that a descriptor is watched for. 0 leaves EPOLLHUP and EPOLLERR, which
// cannot be turned off.
bool change_in_epoll(int epoll, int fd, uint64_t key, uint32_t events);

// A one-shot timer. Its descriptor becomes readable when the time is up.
class Timer {
 public:
  Timer();

  explicit operator bool() const { return static_cast<bool>(fd_); }
  int fd() const { return fd_.get(); }
  bool is_running() const { return is_running_; }

  // Starts the timer, or restarts it with another time.
  void start(std::chrono::nanoseconds time);
  // Call when the descriptor is readable.
  void expire();

 private:
  ScopedFd fd_;
  bool is_running_ = false;
};

struct Accepted {
  ScopedFd socket;            // non-blocking; empty when there is no connection
  bool is_exhausted = false;  // a connection waits, but there is no descriptor or memory for it
};

Accepted accept_from(int listener);

// How long a server ignores its listening socket after accept() has run out of descriptors. The
// socket stays readable, so watching it would make the server spin.
constexpr std::chrono::milliseconds kAcceptPause{100};

}  // namespace qmi_transport
