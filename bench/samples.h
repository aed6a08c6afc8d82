// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <vector>

namespace bench {

using Samples = std::vector<double>;

// The value that `part` (0 to 1) of the samples do not exceed.
inline double quantile(Samples samples, double part) {
  auto place = static_cast<long>(part * static_cast<double>(samples.size() - 1));
  std::nth_element(samples.begin(), samples.begin() + place, samples.end());
  return samples[static_cast<size_t>(place)];
}

inline double median(const Samples& samples) { return quantile(samples, 0.5); }

}  // namespace bench
