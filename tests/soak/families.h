// SPDX-License-Identifier: Apache-2.0
// The families of requests: each one draws a request and tells by the model, byte for byte, what
// the parent must read.
#pragma once

#include <span>

#include "tests/soak/modem_model.h"

namespace soak {

struct Case {
  Bytes request;
  Bytes replies;
};

// A request to the modem that may be spoiled, and how many of its name a case can make.
struct Target {
  const char* message = nullptr;
  uint32_t exchanges = 1;
};

constexpr size_t kMaxTargets = 5;

struct Family {
  const char* name;
  uint32_t weight;
  Case (*draw)(Draws& draws, ModemModel& modem);
  Target targets[kMaxTargets] = {};
};

std::span<const Family> nv_families();
std::span<const Family> nam_families();
std::span<const Family> setting_families();
std::span<const Family> network_families();
std::span<const Family> feature_families();
std::span<const Family> foreign_families();

// The one error that means something to the daemon.
constexpr uint16_t kNoRadio = 93;

// The parent's status for an operation's outcome.
constexpr uint32_t status_of(bool done) { return done ? 0 : 5; }

// Six characters for a request's code field. They come back in replies with the request's header.
inline std::string draw_code(Draws& draws) { return draws.digits(6); }

}  // namespace soak
