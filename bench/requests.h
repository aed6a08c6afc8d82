// SPDX-License-Identifier: Apache-2.0
// The requests that are measured.
#pragma once

#include <array>

#include "bench/rig.h"
#include "tests/e2e/support/wire.h"

namespace bench {

struct Measured {
  const char* name;
  qorextctl::Bytes request;
};

inline std::array<Measured, 4> measured_requests() {
  return {{
      {"unknown", {std::begin(kUnknownRequest), std::end(kUnknownRequest)}},
      {"nv_read", e2e::cdma(0x02000016, e2e::words({28, 0, 0, 0}))},
      {"get_nam", e2e::cdma(0x02000001)},
      {"data_plmn", e2e::hex("01060001 00000000")},
  }};
}

}  // namespace bench
