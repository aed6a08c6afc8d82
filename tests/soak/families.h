// SPDX-License-Identifier: Apache-2.0
// The families of requests: each one generates requests and the exact bytes that the parent must
// read, according to the model of the modem.
#pragma once

#include <span>

#include "tests/soak/modem_model.h"

namespace soak {

struct Case {
  Bytes request;
  Bytes replies;
};

// A request to the modem into which a fault can be injected, and the maximum number in one case.
struct Target {
  const char* message = nullptr;
  uint32_t exchanges = 1;
};

constexpr size_t kMaxTargets = 5;

struct Family {
  const char* name;
  uint32_t weight;
  Case (*make_case)(Random& random, ModemModel& modem);
  Target targets[kMaxTargets] = {};
};

std::span<const Family> nv_families();
std::span<const Family> nam_families();
std::span<const Family> setting_families();
std::span<const Family> network_families();
std::span<const Family> feature_families();
std::span<const Family> foreign_families();

// The only error that the daemon handles specially.
constexpr uint16_t kNoRadio = 93;

// The reply's status for the result of an operation.
constexpr uint32_t status_of(bool done) { return done ? 0 : 5; }

// A request's code field, which replies with the request's header return.
inline std::string random_code(Random& random) { return random.digits(6); }

}  // namespace soak
