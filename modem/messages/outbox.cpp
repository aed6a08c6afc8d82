// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/outbox.h"

#include <utility>

#include "modem/messages/packet.h"
#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"

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

void indicate(Outbox& outbox, const IndicationBurst& burst) {
  const qmi_idl::Service& service = qorext_service();
  const qmi_idl::Message* message =
      qmi_json::find_by_name(service, qmi_idl::Direction::indication, burst.indication);
  if (message == nullptr) {
    throw qmi_json::FieldError("unknown indication \"" + burst.indication + "\"");
  }

  Bytes structure(message->size);
  qmi_json::from_json(*message, burst.fields, structure);
  Bytes packet = encode_packet(qmi_idl::WireType::indication, kNoTransaction, *message, structure);
  for (uint32_t i = 0; i < burst.count; ++i) {
    outbox.add({Action::Kind::broadcast, service.id, 0, packet}, burst.delay + i * burst.interval);
  }
}

}  // namespace modem
