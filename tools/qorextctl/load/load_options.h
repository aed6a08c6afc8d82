// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace qorextctl {

struct LoadOptions {
  size_t count = 1000;
  double rate = 0;  // requests a second; 0: consecutive
  std::string mix = "nv-read:3,get-nam:1";
  std::string mix_file;  // instead of `mix`
  uint32_t seed = 1;
  double time_limit = 600;  // seconds for the whole run
};

}  // namespace qorextctl
