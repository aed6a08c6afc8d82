// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "platform/linux/qmi_transport/scoped_fd.h"

namespace qmi_transport {

// A descriptor that becomes readable once, when its time has come.
class Timer {
 public:
  Timer() : fd_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

  explicit operator bool() const { return static_cast<bool>(fd_); }
  int fd() const { return fd_.get(); }
  bool is_running() const { return is_running_; }

  // Replaces the time that it had.
  void start(std::chrono::nanoseconds time) {
    constexpr std::chrono::nanoseconds kMin{1};  // zero would stop it
    auto left = std::max(time, kMin);
    auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    itimerspec when{};
    when.it_value = {seconds.count(), (left - seconds).count()};
    timerfd_settime(fd_.get(), 0, &when, nullptr);
    is_running_ = true;
  }

  // To be called when the descriptor is readable.
  void expire() {
    uint64_t count = 0;
    is_running_ = read(fd_.get(), &count, sizeof count) != sizeof count;
  }

 private:
  ScopedFd fd_;
  bool is_running_ = false;
};

}  // namespace qmi_transport
