// SPDX-License-Identifier: Apache-2.0
// What the modem is told to do wrong with one exchange.
#pragma once

#include <span>
#include <string>

#include "tests/soak/draws.h"

namespace soak {

// What the daemon has of an exchange: the modem's answer, a refusal, or nothing that it can use.
enum class Got { answer, refusal, nothing };

struct SpoilingKind {
  const char* fault;  // in the words of the modem's control socket
  bool is_served;     // whether the request has its effect on the modem
  Got got;
};

std::span<const SpoilingKind> all_spoilings();
// Those that make the daemon wait for its 15 seconds.
std::span<const SpoilingKind> slow_spoilings();

struct Spoiling {
  const SpoilingKind* kind;
  std::string message;  // the request to the modem that is spoiled,
  uint32_t spared;      // after as many with the same name
  uint16_t result;      // of a refusal
  uint16_t error;

  // The commands that bring it about.
  std::vector<std::string> commands() const;
};

}  // namespace soak
