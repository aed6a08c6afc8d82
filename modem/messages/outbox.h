// SPDX-License-Identifier: Apache-2.0
// What the modem wants done on its transport, each thing at its time.
#pragma once

#include <stdint.h>

#include <chrono>
#include <map>
#include <optional>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Action {
  enum class Kind {
    send,       // the packet to one client
    broadcast,  // the packet to all clients of the service
    withdraw,   // the service goes away
    publish,    // the service comes up, with as many instances as it is to have
    resize,     // the same if it is up, and those beyond go away
  } kind;
  uint32_t service = 0;
  uint64_t peer = 0;
  qmi_json::Bytes packet;
};

class Outbox {
 public:
  void add(Action action, milliseconds delay = milliseconds(0));

  // The earliest action whose time has come; those of one time in the order they were added.
  std::optional<Action> take_due(Clock::time_point now);

  // When the next action is due; nothing when there is none.
  std::optional<Clock::time_point> next_due() const;

 private:
  std::multimap<Clock::time_point, Action> actions_;
};

}  // namespace modem
