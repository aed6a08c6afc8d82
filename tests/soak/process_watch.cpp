// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/process_watch.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "tests/e2e/support/wait.h"

namespace soak {

namespace {

using e2e::ProcessFigures;

// Sanitizers and coverage add memory of their own to a process.
#ifdef SOAK_WITHOUT_MEMORY
constexpr bool kMeasuresMemory = false;
#else
constexpr bool kMeasuresMemory = true;
#endif

constexpr size_t kMaxPrinted = 10;

std::string text_of(const ProcessFigures& figures) {
  return fmt::format("{} KiB resident ({} anonymous), {} descriptors, {} threads", figures.resident,
                     figures.anonymous, figures.descriptors, figures.threads);
}

}  // namespace

// Waits for the threads that save a block to end.
ProcessFigures ProcessWatch::settled_figures(pid_t pid) const {
  ProcessFigures figures{};
  e2e::wait_until([&] {
    figures = e2e::figures_of(pid);
    return !has_first_ || figures.threads <= first_.threads;
  });
  return figures;
}

void ProcessWatch::sample(pid_t pid, bool is_warm) {
  last_ = settled_figures(pid);
  max_resident_ = std::max(max_resident_, last_.resident);
  anonymous_.push_back(last_.anonymous);
  if (!is_warm) return;
  if (!has_first_) first_ = last_;
  has_first_ = true;
  EXPECT_EQ(last_.descriptors, first_.descriptors) << name_;
  EXPECT_EQ(last_.threads, first_.threads) << name_;
  if (!kMeasuresMemory) return;
  EXPECT_LE(last_.resident, first_.resident + max_growth_) << name_;
}

void ProcessWatch::print() const {
  std::cout << fmt::format("{}: first {}\n{}: last {}\n{}: at most {} KiB resident, anonymous:",
                           name_, text_of(first_), name_, text_of(last_), name_, max_resident_);
  size_t step = std::max<size_t>(1, anonymous_.size() / kMaxPrinted);
  for (size_t i = 0; i < anonymous_.size(); i += step) std::cout << " " << anonymous_[i];
  std::cout << "\n";
}

}  // namespace soak
