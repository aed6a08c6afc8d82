// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/process_watch.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <iostream>

#include "tests/e2e/support/patience.h"
#include "tools/qorextctl/base/deadline.h"

namespace soak {

namespace {

using e2e::ProcessFigures;

// What a sanitizer or the counting of lines adds to a process is not its own.
#ifdef SOAK_WITHOUT_MEMORY
constexpr bool kMeasuresMemory = false;
#else
constexpr bool kMeasuresMemory = true;
#endif

constexpr size_t kPartsOfCourse = 10;

std::string text_of(const ProcessFigures& figures) {
  return fmt::format("{} KiB resident ({} anonymous), {} descriptors, {} threads", figures.resident,
                     figures.anonymous, figures.descriptors, figures.threads);
}

}  // namespace

// Threads that save a block end by themselves.
ProcessFigures ProcessWatch::settled_figures(pid_t pid) const {
  auto deadline = qorextctl::Deadline::in(e2e::kPatience);
  ProcessFigures figures = e2e::figures_of(pid);
  while (has_first_ && figures.threads > first_.threads && !deadline.passed()) {
    sched_yield();
    figures = e2e::figures_of(pid);
  }
  return figures;
}

void ProcessWatch::look(pid_t pid, bool counts) {
  last_ = settled_figures(pid);
  most_resident_ = std::max(most_resident_, last_.resident);
  course_.push_back(last_.anonymous);
  if (!counts) return;
  if (!has_first_) first_ = last_;
  has_first_ = true;
  EXPECT_EQ(last_.descriptors, first_.descriptors) << name_;
  EXPECT_EQ(last_.threads, first_.threads) << name_;
  if (!kMeasuresMemory) return;
  EXPECT_LE(last_.resident, first_.resident + most_growth_) << name_;
}

void ProcessWatch::print() const {
  std::cout << fmt::format("{}: first {}\n{}: last {}\n{}: at most {} KiB resident, anonymous:",
                           name_, text_of(first_), name_, text_of(last_), name_, most_resident_);
  size_t step = std::max<size_t>(1, course_.size() / kPartsOfCourse);
  for (size_t i = 0; i < course_.size(); i += step) std::cout << " " << course_[i];
  std::cout << "\n";
}

}  // namespace soak
