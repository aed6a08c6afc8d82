// SPDX-License-Identifier: Apache-2.0
// What a process needs of the system in a long run: it may not become more.
#pragma once

#include <string>
#include <vector>

#include "tests/e2e/support/process_figures.h"

namespace soak {

class ProcessWatch {
 public:
  // Resident memory may grow by so many KiB: code and libraries that are first used late come into
  // memory late.
  ProcessWatch(const char* name, size_t most_growth) : name_(name), most_growth_(most_growth) {}

  // Expects what it finds to be as at the first look that counted.
  void look(pid_t pid, bool counts);
  void print() const;

 private:
  e2e::ProcessFigures settled_figures(pid_t pid) const;

  const char* name_;
  size_t most_growth_;
  bool has_first_ = false;
  e2e::ProcessFigures first_{};
  e2e::ProcessFigures last_{};
  size_t most_resident_ = 0;
  std::vector<size_t> course_;  // of anonymous memory, from look to look
};

}  // namespace soak
