// SPDX-License-Identifier: Apache-2.0
// What the modem reports by itself, and what the parent must read of it, in its order.
#pragma once

#include <deque>
#include <string>

#include "tests/soak/draws.h"
#include "tests/soak/kpi_model.h"

namespace soak {

// What the parent is to get.
struct Parent {
  std::deque<Bytes> messages;  // not yet read
  uint32_t next_notification = 12;
  KpiModel kpi;
  std::string cable_status = "(none)";  // of the antenna, a property
};

struct Report {
  std::string command;  // for the modem's control socket
  const char* kind;
  uint32_t count;  // of indications
};

// At most as many indications.
Report draw_report(Draws& draws, uint32_t most, Parent& parent);

}  // namespace soak
