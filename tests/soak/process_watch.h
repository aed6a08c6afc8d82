// SPDX-License-Identifier: Apache-2.0
// The resources of a process, which must not grow in a long run.
#pragma once

#include <string>
#include <vector>

#include "tests/e2e/support/process_figures.h"

namespace soak {

class ProcessWatch {
 public:
  // `max_growth` is in KiB of resident memory: code that is first used late is loaded late.
  ProcessWatch(const char* name, size_t max_growth) : name_(name), max_growth_(max_growth) {}

  // Takes a sample. After the warm-up, expects the figures of the first sample.
  void sample(pid_t pid, bool is_warm);
  void print() const;

 private:
  e2e::ProcessFigures settled_figures(pid_t pid) const;

  const char* name_;
  size_t max_growth_;
  bool has_first_ = false;
  e2e::ProcessFigures first_{};
  e2e::ProcessFigures last_{};
  size_t max_resident_ = 0;
  std::vector<size_t> anonymous_;  // of each sample
};

}  // namespace soak
