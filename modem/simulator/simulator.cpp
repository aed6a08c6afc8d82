// SPDX-License-Identifier: Apache-2.0
#include "modem/simulator/simulator.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "modem/messages/packet.h"
#include "modem/messages/services.h"

namespace modem {
namespace {

using nlohmann::json;

constexpr size_t kMaxRequests = 10000;

// UTC in the form of ISO 8601, with milliseconds.
std::string time_text(std::chrono::system_clock::time_point time) {
  auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(ms / 1000), ms % 1000);
}

}  // namespace

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
          {"message", message_name(*service, qmi_idl::Direction::request, header.message_id)},
          {"fields", fields_of(*service, header, tlvs)},
          {"time", time_text(time)}};
}

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
