// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <errno.h>
#include <unistd.h>

#include <utility>

namespace qmi_transport {

// Owns a descriptor; closing it leaves errno as it was.
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

}  // namespace qmi_transport
