// SPDX-License-Identifier: Apache-2.0
#include "modem/control/watch.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "modem/messages/outbox.h"

namespace modem {
namespace {

using nlohmann::json;

int64_t now() { return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count(); }

}  // namespace

std::string watched_message(const qmi_idl::Service& service, uint64_t client,
                            std::span<const uint8_t> packet) {
  json message = {{"time", now()},
                  {"service", service.name},
                  {"client", client},
                  {"packet", qmi_json::to_hex(packet)}};
  return json{{"message", message}}.dump();
}

std::string watched_service(const qmi_idl::Service& service, bool is_up) {
  return json{{"service", {{"time", now()}, {"name", service.name}, {"up", is_up}}}}.dump();
}

}  // namespace modem
