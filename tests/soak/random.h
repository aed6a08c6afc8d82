// SPDX-License-Identifier: Apache-2.0
// The one source of random values, so that the same seed gives the same run.
#pragma once

#include <algorithm>
#include <iterator>
#include <random>
#include <string>

#include "tests/e2e/support/wire.h"

namespace soak {

using e2e::Bytes;

class Random {
 public:
  explicit Random(uint32_t seed) : random_(seed) {}

  uint32_t word() { return static_cast<uint32_t>(random_()); }
  uint32_t below(uint32_t end) { return word() % end; }
  uint32_t between(uint32_t first, uint32_t last) { return first + below(last - first + 1); }
  bool one_in(uint32_t times) { return below(times) == 0; }
  uint8_t byte() { return static_cast<uint8_t>(word()); }

  Bytes bytes(size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [this] { return byte(); });
    return bytes;
  }
  std::string characters(size_t size, char first, uint32_t count) {
    std::string text(size, first);
    for (char& character : text)
      character = static_cast<char>(first + static_cast<int>(below(count)));
    return text;
  }
  std::string digits(size_t size) { return characters(size, '0', 10); }
  std::string letters(size_t size) { return characters(size, 'a', 26); }

  template <class Rows>
  const auto& one_of(const Rows& rows) {
    return *(std::begin(rows) + below(static_cast<uint32_t>(std::size(rows))));
  }
  // Rows have a `weight`.
  template <class Rows>
  const auto& weighted(const Rows& rows) {
    uint32_t sum = 0;
    for (const auto& row : rows) sum += row.weight;
    uint32_t left = below(sum);
    auto row = std::begin(rows);
    while (left >= row->weight) left -= (row++)->weight;
    return *row;
  }

 private:
  std::mt19937 random_;
};

}  // namespace soak
