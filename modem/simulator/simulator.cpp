// SPDX-License-Identifier: Apache-2.0
#include "modem/simulator/simulator.h"

namespace modem {

void Simulator::receive(const qmi_idl::Service& service, uint64_t peer,
                        std::span<const uint8_t> packet) {
  auto header = qmi_idl::load_header(packet);
  if (!header || header->type != qmi_idl::WireType::request) return;

  auto tlvs = packet.subspan(qmi_idl::kHeaderSize);
  requests.record(service, *header, tlvs);
  auto fault = faults.take(service, header->message_id);
  Bytes response;
  if (!fault || serves_request(*fault)) response = respond(device, service, *header, tlvs);
  if (fault) return faults.apply(*fault, {service, *header, peer, response}, device.outbox);
  device.outbox.add({Action::Kind::send, service.id, peer, std::move(response)});
}

}  // namespace modem
