// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/packet.h"

#include "platform/linux/qmi_json/fields.h"

namespace modem {
namespace {

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

}  // namespace modem
