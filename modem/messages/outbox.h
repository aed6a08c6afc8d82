// SPDX-License-Identifier: Apache-2.0
// Actions for the transport, each at its time.
#pragma once

#include <stdint.h>

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Action {
  enum class Kind {
    send,       // the packet to one client
    broadcast,  // the packet to all clients of the service
    withdraw,   // remove the service
    publish,    // publish the service with its number of instances
    resize,     // change the number of instances of a published service
  } kind;
  uint32_t service = 0;
  uint64_t peer = 0;
  qmi_json::Bytes packet;
};

class Outbox {
 public:
  void add(Action action, milliseconds delay = milliseconds(0));

  // The earliest action that is due; actions of the same time in the order of add().
  std::optional<Action> take_due(Clock::time_point now);

  // The time of the next action, if there is one.
  std::optional<Clock::time_point> next_due() const;

 private:
  std::multimap<Clock::time_point, Action> actions_;
};

constexpr uint32_t kMaxBurst = 100000;

// Indications of the vendor service to all its clients.
struct IndicationBurst {
  std::string indication;  // by name
  nlohmann::json fields;
  uint32_t count = 1;
  milliseconds interval{0};
  milliseconds delay{0};  // before the first
};

// Throws FieldError for an unknown indication or wrong fields.
void indicate(Outbox& outbox, const IndicationBurst& burst);

}  // namespace modem
