// SPDX-License-Identifier: Apache-2.0
// What a program does with each request, call by call: recorded from the daemon, for the limit
// program to do the same and nothing else. A text, one step a line, bytes in hexadecimal:
//
//   request BYTES            begins a request; the steps follow in their order
//   log LINE                 a log line as it is written to a terminal (as bytes, with its end)
//   exchange SERVICE BYTES   a request packet to one of the modem's services, and its response
//   reply BYTES
#pragma once

#include <stdint.h>

#include <istream>
#include <string>
#include <vector>

#include "tools/qorextctl/base/bytes.h"

namespace bench {

struct Step {
  enum class Kind { log, exchange, reply } kind;
  uint32_t number;  // the log line's priority, the exchange's service
  qorextctl::Bytes bytes;
};

struct PlannedRequest {
  qorextctl::Bytes request;
  std::vector<Step> steps;
};

// Throws when the text is no plan.
std::vector<PlannedRequest> read_plan(std::istream& text);

// Names the file with the plan, in the limit program's environment.
constexpr char kPlanVariable[] = "QOREXT_BENCH_PLAN";

}  // namespace bench
