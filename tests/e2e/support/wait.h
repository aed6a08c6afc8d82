// SPDX-License-Identifier: Apache-2.0
// How long tests wait, and how they poll.
#pragma once

#include <sched.h>

#include <chrono>

#include "tools/qorextctl/base/deadline.h"

namespace e2e {

using qorextctl::Deadline;

// Longer than any correct operation takes, even on a loaded machine under a sanitizer.
constexpr std::chrono::seconds kTimeout{40};

inline Deadline time_limit() { return Deadline::in(kTimeout); }

// Polls the condition until it holds or the timeout expires. Returns whether it holds.
template <class Condition>
bool wait_until(Condition holds) {
  Deadline deadline = time_limit();
  while (!holds()) {
    if (deadline.passed()) return false;
    sched_yield();
  }
  return true;
}

}  // namespace e2e
