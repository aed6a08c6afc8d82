// SPDX-License-Identifier: Apache-2.0
// The time at which a wait ends.
#pragma once

#include <algorithm>
#include <chrono>

namespace qorextctl {

constexpr double kDefaultTimeoutSeconds = 20;

class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  static Deadline in(std::chrono::milliseconds time) { return Deadline(Clock::now() + time); }
  static Deadline in_seconds(double seconds) {
    return Deadline(Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                       std::chrono::duration<double>(seconds)));
  }

  Clock::time_point time() const { return time_; }
  bool passed() const { return Clock::now() >= time_; }

  // The timeout for poll(), at least 0. Rounded up, so that poll() does not return too early.
  int remaining_ms() const {
    auto left = std::chrono::ceil<std::chrono::milliseconds>(time_ - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, kMaxMs));
  }

 private:
  explicit Deadline(Clock::time_point time) : time_(time) {}

  static constexpr int kMaxMs = 1'000'000'000;
  Clock::time_point time_;
};

}  // namespace qorextctl
