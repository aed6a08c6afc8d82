// SPDX-License-Identifier: Apache-2.0
// The simulated modem without its bookkeeping, so that it costs little beside what is measured: it
// computes the response to a request once and repeats it for equal requests. It has the options of
// qorext_modem and no control socket.
#include <poll.h>
#include <unistd.h>

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "modem/handlers/dispatch.h"
#include "modem/messages/services.h"
#include "modem/options.h"
#include "modem/state/state.h"
#include "platform/linux/qmi_transport/wait.h"

namespace {

using modem::Bytes;
using qmi_idl::Header;
using qmi_transport::ServerEvent;

constexpr uint32_t kInstance = 1 << 8;

class Responses {
 public:
  // Returns an empty packet when `packet` is not a request.
  const Bytes& respond(uint32_t service_id, std::span<const uint8_t> packet) {
    static const Bytes nothing;
    auto request = qmi_idl::load_header(packet);
    if (!request || request->type != qmi_idl::WireType::request) return nothing;
    Bytes& response = response_to(service_id, *request, packet.subspan(qmi_idl::kHeaderSize));
    Header header = *qmi_idl::load_header(response);
    header.transaction = request->transaction;
    qmi_idl::store_header(header, std::span(response).first<qmi_idl::kHeaderSize>());
    return response;
  }

 private:
  Bytes& response_to(uint32_t service_id, const Header& header, std::span<const uint8_t> tlvs) {
    // Service, message id, TLVs.
    key_.assign({static_cast<char>(service_id), static_cast<char>(header.message_id),
                 static_cast<char>(header.message_id >> 8)});
    key_.append(tlvs.begin(), tlvs.end());
    auto found = responses_.find(key_);
    if (found != responses_.end()) return found->second;
    auto& service = *modem::find_service(service_id);
    return responses_[key_] = modem::respond(device_, service, header, tlvs);
  }

  modem::Device device_{modem::factory_state(), modem::factory_state(), {}};
  std::unordered_map<std::string, Bytes> responses_;
  std::string key_;
};

void serve(qmi_transport::Server& server) {
  Responses responses;
  std::vector<uint8_t> buffer(qmi_transport::kMaxPacketSize);
  while (qmi_transport::wait_for(server.fd(), POLLIN, qmi_transport::Deadline::max())) {
    ServerEvent event = server.next(buffer);
    if (event.kind != ServerEvent::Kind::packet) continue;
    auto& response = responses.respond(event.service, std::span(buffer).first(event.size));
    if (!response.empty()) server.send(event.peer, response);
  }
}

}  // namespace

int main(int argc, char** argv) {
  auto parsed = modem::parse_options(argc, argv);
  if (const int* status = std::get_if<int>(&parsed)) return *status;
  auto& options = std::get<modem::Options>(parsed);

  auto server = qmi_transport::serve(options.endpoint);
  if (server == nullptr) return EXIT_FAILURE;
  for (auto* service : modem::services()) {
    server->publish(service->id, kInstance | service->version);
  }
  if (write(options.ready_fd, "\n", 1) != 1) return EXIT_FAILURE;
  serve(*server);
}
