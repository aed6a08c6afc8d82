// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/spelling.h"

#include <algorithm>
#include <numeric>

namespace qorextctl {

namespace {

constexpr size_t kMaxMistakes = 2;

// Characters to insert, delete or replace.
size_t distance(const std::string& from, const std::string& to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= from.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 1; j <= to.size(); ++j) {
      size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row.back();
}

}  // namespace

std::string nearest(const std::string& name, const std::vector<std::string>& names) {
  std::string best;
  size_t least = kMaxMistakes + 1;
  for (const std::string& candidate : names) {
    auto [shorter, longer] = std::minmax({name.size(), candidate.size()});
    if (longer - shorter >= least) continue;  // each character too many is a mistake
    size_t mistakes = distance(name, candidate);
    if (mistakes >= least) continue;
    best = candidate;
    least = mistakes;
  }
  return best;
}

std::string argument_name(std::string name) {
  std::replace(name.begin(), name.end(), '_', '-');
  return name;
}

std::string json_key(std::string name) {
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

}  // namespace qorextctl
