// SPDX-License-Identifier: Apache-2.0
// Pseudo-random numbers that are the same in every run.
#pragma once

#include <random>
#include <string>

class RandomDigits {
 public:
  explicit RandomDigits(uint32_t seed) : random_(seed) {}

  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }

  std::string digits(size_t count) {
    std::string text(count, '0');
    for (char& digit : text) digit = static_cast<char>('0' + below(10));
    return text;
  }

 private:
  std::mt19937 random_;
};
