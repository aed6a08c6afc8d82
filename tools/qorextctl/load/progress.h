// SPDX-License-Identifier: Apache-2.0
// How far something is, for a person at a terminal.
#pragma once

#include <chrono>
#include <string>

#include "tools/qorextctl/output/terminal.h"

namespace qorextctl {

// "[#####.....] 5000/10000, 498 a second, 10 s left".
std::string progress_text(size_t done, size_t all, double seconds);

// A line on standard error that is drawn over and over, and taken away at the end; nothing where
// that is no terminal. Output through the printer that shares the screen goes above it.
class Progress final : public InputLine {
 public:
  Progress(size_t all, int fd);
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Draws a few times a second, however often it is called.
  void update(size_t done);

  void hide() override;
  void show() override;

 private:
  using Clock = std::chrono::steady_clock;

  size_t all_;
  int fd_;  // -1: no terminal
  std::string line_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_;
};

}  // namespace qorextctl
