// SPDX-License-Identifier: Apache-2.0
// The measuring loop of `qorextctl load` and of the benchmarks.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "tools/qorextctl/base/deadline.h"

namespace qorextctl {

// Returns the smallest value that this share (0 to 1) of the values does not exceed (nearest rank).
// There must be at least one value.
template <class T>
T quantile(std::vector<T> values, double share) {
  auto rank = static_cast<size_t>(std::ceil(share * static_cast<double>(values.size())));
  auto place = values.begin() + static_cast<ptrdiff_t>(std::max<size_t>(rank, 1) - 1);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// Milliseconds to the end of an exchange.
struct Timing {
  double latency;  // from when it was due
  double service;  // from when it began
};

// Runs up to `count` exchanges and returns the seconds that they took. Exchange i is due i/rate
// seconds after the first one; with rate 0, when the one before has ended. wait(i, due) precedes
// each exchange() and returns false to stop; done(timing) follows it.
template <class Wait, class Exchange, class Done>
double run_exchanges(size_t count, double rate, Wait wait, Exchange exchange, Done done) {
  using Clock = Deadline::Clock;
  using Seconds = std::chrono::duration<double>;
  auto milliseconds = [](Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
  };
  const auto start = Clock::now();
  for (size_t i = 0; i < count; ++i) {
    auto due = Clock::now();
    if (rate > 0) {
      Seconds after_start(static_cast<double>(i) / rate);
      due = start + std::chrono::duration_cast<Clock::duration>(after_start);
    }
    if (!wait(i, due)) break;
    auto begun = Clock::now();
    exchange();
    auto ended = Clock::now();
    done(Timing{milliseconds(ended - due), milliseconds(ended - begun)});
  }
  return Seconds(Clock::now() - start).count();
}

}  // namespace qorextctl
