// SPDX-License-Identifier: Apache-2.0
// What a load prints: its progress, then how long the requests took.
#pragma once

#include <unistd.h>

#include <map>
#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/load/engine.h"
#include "tools/qorextctl/output/terminal.h"

namespace qorextctl {

class LoadReport {
 public:
  void add(const std::string& name, const Timing& timing, bool failed);
  void set_seconds(double seconds) { seconds_ = seconds; }

  size_t count() const { return count_; }
  size_t failed() const;

  // A table with one row per name, and a histogram of all latencies.
  std::string text() const;

  // One object per name, and one of the whole with the histogram.
  std::vector<Json> objects() const;

 private:
  struct Samples {  // milliseconds
    std::vector<float> latencies;
    std::vector<float> services;
    size_t failed = 0;
  };
  struct Bucket {
    double below;  // milliseconds
    size_t count;
  };
  std::vector<Bucket> histogram() const;  // from the first bucket that is not empty
  double rate() const;

  std::map<std::string, Samples> names_;
  size_t count_ = 0;
  double seconds_ = 0;
};

// "[#####.....] 5000/10000, 498 a second, 10 s left".
std::string progress_text(size_t done, size_t all, double seconds);

// A line that is redrawn on a terminal and removed at the end. Does nothing when the descriptor is
// not a terminal. Output of the printer that shares the screen appears above it.
class Progress final : public InputLine {
 public:
  Progress(size_t all, int fd) : all_(all), fd_(isatty(fd) == 1 ? fd : -1) {}
  ~Progress() { hide(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Draws at most every 100 ms.
  void update(size_t done);

  void hide() override;
  void show() override;

 private:
  using Clock = Deadline::Clock;

  size_t all_;
  int fd_;  // -1: not a terminal
  std::string line_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_ = start_;
};

}  // namespace qorextctl
