// SPDX-License-Identifier: Apache-2.0
// The modem's indications, and the messages that the parent must read in this order.
#pragma once

#include <deque>
#include <string>

#include "tests/soak/kpi_model.h"
#include "tests/soak/random.h"

namespace soak {

// The expected state of the parent.
struct Parent {
  std::deque<Bytes> messages;  // not yet read
  uint32_t next_notification = 12;
  KpiModel kpi;
  std::string cable_status = "(none)";  // the property of the RF cable
};

struct Report {
  std::string command;  // for the modem's control socket
  const char* kind;
  uint32_t count;  // of indications
};

// Generates at most `max` indications of one kind.
Report random_report(Random& random, uint32_t max, Parent& parent);

}  // namespace soak
