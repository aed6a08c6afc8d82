// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/packet.h"

#include <fmt/format.h>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"

namespace modem {
namespace {

using nlohmann::json;
using qmi_idl::Direction;
using qmi_idl::WireType;

constexpr size_t kMaxTlvs = UINT16_MAX;

}  // namespace

Bytes make_packet(qmi_idl::WireType type, uint16_t transaction, uint32_t message_id,
                  std::span<const uint8_t> tlvs) {
  Bytes packet(qmi_idl::kHeaderSize);
  qmi_idl::store_header(
      {type, transaction, static_cast<uint16_t>(message_id), static_cast<uint16_t>(tlvs.size())},
      std::span<uint8_t, qmi_idl::kHeaderSize>(packet));
  packet.insert(packet.end(), tlvs.begin(), tlvs.end());
  return packet;
}

Bytes encode_packet(qmi_idl::WireType type, uint16_t transaction, const qmi_idl::Message& message,
                    std::span<const uint8_t> structure) {
  Bytes tlvs(kMaxTlvs);
  ssize_t size = encode(message, structure, tlvs);
  if (size < 0) throw qmi_json::FieldError(std::string(message.name) + ": cannot be encoded");
  tlvs.resize(static_cast<size_t>(size));
  return make_packet(type, transaction, message.id, tlvs);
}

Bytes result_packet(uint16_t transaction, uint32_t message_id, uint16_t result, uint16_t error) {
  auto low = [](uint16_t value) { return static_cast<uint8_t>(value); };
  auto high = [](uint16_t value) { return static_cast<uint8_t>(value >> 8); };
  const uint8_t tlv[] = {qmi_idl::kResultTlv, 4,          0,          low(result),
                         high(result),        low(error), high(error)};
  return make_packet(qmi_idl::WireType::response, transaction, message_id, tlv);
}

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

}  // namespace modem
