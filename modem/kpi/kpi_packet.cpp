// SPDX-License-Identifier: Apache-2.0
#include "modem/kpi/kpi_packet.h"

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/fields.h"

namespace modem {
namespace {

constexpr int64_t kKpiIndication = 1;  // among the types of the utility indication

void append_le(Bytes& bytes, uint32_t value, size_t size) {
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

Bytes packet_bytes(const KpiPacket& packet) {
  Bytes bytes = {packet.package, packet.sequence, uint8_t{packet.is_last}, 0};
  append_le(bytes, static_cast<uint32_t>(packet.payload.size()), sizeof(uint16_t));
  bytes.insert(bytes.end(), packet.payload.begin(), packet.payload.end());
  return bytes;
}

}  // namespace

Bytes kpi_indication(const KpiPacket& packet) {
  static const qmi_idl::Message& message =
      *qmi_json::find_by_name(qorext_service(), qmi_idl::Direction::indication, "utils");
  Bytes structure(message.size);
  qmi_json::Fields fields(message, structure);
  fields.set("type", kKpiIndication);
  fields.set("data", packet_bytes(packet));
  return encode_packet(qmi_idl::WireType::indication, kNoTransaction, message, structure);
}

Bytes with_header(uint32_t word, std::span<const uint8_t> content) {
  Bytes payload;
  append_le(payload, word, kKpiWordSize);
  payload.insert(payload.end(), content.begin(), content.end());
  return payload;
}

void describe(Archive& archive, KpiPacketOptions& options) {
  KpiPacket& packet = options.packet;
  archive.number("package", packet.package);
  archive.number("sequence", packet.sequence);
  archive.flag("last", packet.is_last);
  options.has_header = archive.number("header", options.header);
  size_t room = kMaxKpiPayload - (options.has_header ? kKpiWordSize : 0);
  archive.hex("data", packet.payload, up_to(room));
}

Bytes kpi_indication(const KpiPacketOptions& options) {
  KpiPacket packet = options.packet;
  if (options.has_header) packet.payload = with_header(options.header, packet.payload);
  return kpi_indication(packet);
}

}  // namespace modem
