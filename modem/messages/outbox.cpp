// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/outbox.h"

#include <utility>

namespace modem {

void Outbox::add(Action action, milliseconds delay) {
  actions_.emplace(Clock::now() + delay, std::move(action));
}

std::optional<Action> Outbox::take_due(Clock::time_point now) {
  if (actions_.empty() || actions_.begin()->first > now) return std::nullopt;
  auto node = actions_.extract(actions_.begin());
  return std::move(node.mapped());
}

std::optional<Clock::time_point> Outbox::next_due() const {
  if (actions_.empty()) return std::nullopt;
  return actions_.begin()->first;
}

}  // namespace modem
