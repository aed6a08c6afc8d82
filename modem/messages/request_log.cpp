// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/request_log.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <string>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"

namespace modem {
namespace {

using nlohmann::json;
using qmi_idl::Direction;
using qmi_idl::WireType;

constexpr size_t kMaxRequests = 10000;

// UTC with milliseconds, as ISO 8601 writes it.
std::string time_text(std::chrono::system_clock::time_point time) {
  auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(ms / 1000), ms % 1000);
}

}  // namespace

Direction direction_of(WireType type) {
  switch (type) {
    case WireType::request:
      return Direction::request;
    case WireType::response:
      return Direction::response;
    default:
      return Direction::indication;
  }
}

const char* direction_text(Direction direction) {
  constexpr const char* kTexts[] = {"request", "response", "indication"};
  return kTexts[static_cast<size_t>(direction)];
}

json fields_of(const qmi_idl::Service& service, const qmi_idl::Header& header,
               std::span<const uint8_t> tlvs) {
  const qmi_idl::Message* message = find(service, direction_of(header.type), header.message_id);
  if (message == nullptr) return nullptr;
  std::vector<uint8_t> structure(message->size);
  if (!decode(*message, tlvs, structure)) return nullptr;
  return qmi_json::to_json(*message, structure);
}

std::string packet_text(const qmi_idl::Service& service, std::span<const uint8_t> packet) {
  auto header = qmi_idl::load_header(packet);
  if (!header) return fmt::format("{} not a message, {} bytes", service.name, packet.size());

  Direction direction = direction_of(header->type);
  json fields = fields_of(service, *header, packet.subspan(qmi_idl::kHeaderSize));
  return fmt::format(
      "{} {} {} {}", service.name, message_name(service, direction, header->message_id),
      direction_text(direction), fields.dump(-1, ' ', false, json::error_handler_t::replace));
}

void RequestLog::record(const qmi_idl::Service& service, const qmi_idl::Header& header,
                        std::span<const uint8_t> tlvs) {
  if (requests_.size() == kMaxRequests) requests_.pop_front();
  requests_.push_back(
      {&service, header, {tlvs.begin(), tlvs.end()}, std::chrono::system_clock::now()});
}

json RequestLog::all() const {
  json list = json::array();
  for (const Request& request : requests_) list.push_back(request.as_json());
  return list;
}

json RequestLog::Request::as_json() const {
  return {{"service", service->name},
          {"message", message_name(*service, Direction::request, header.message_id)},
          {"fields", fields_of(*service, header, tlvs)},
          {"time", time_text(time)}};
}

}  // namespace modem
