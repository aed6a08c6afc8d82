// SPDX-License-Identifier: Apache-2.0
// How long the requests of a load have taken.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// One request. Times in milliseconds.
struct LoadSample {
  float latency;  // from when it was due to its last reply
  float service;  // from when it was sent
  bool failed;
};

struct Quantiles {
  double min, p50, p90, p99, max;
};
// Each is a value that has come (nearest rank); zeros when none has.
Quantiles quantiles_of(std::vector<float> values);

class LoadReport {
 public:
  void add(const std::string& name, const LoadSample& sample);
  void set_seconds(double seconds) { seconds_ = seconds; }

  size_t count() const { return count_; }
  size_t failed() const;

  // A table with a row a name, and a histogram of all latencies.
  std::string text() const;

  // An object a name, and one of the whole with the histogram.
  std::vector<Json> objects() const;

 private:
  struct Samples {
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

}  // namespace qorextctl
