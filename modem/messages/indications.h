// SPDX-License-Identifier: Apache-2.0
// Indications of the vendor service, to all its clients.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "modem/messages/outbox.h"

namespace modem {

constexpr uint32_t kMaxBurst = 100000;

struct IndicationBurst {
  std::string indication;  // by name
  nlohmann::json fields;
  uint32_t count = 1;
  milliseconds interval{0};  // between two of them
  milliseconds delay{0};     // before the first
};

// Throws FieldError when there is no such indication or its fields are wrong.
void indicate(Outbox& outbox, const IndicationBurst& burst);

}  // namespace modem
