// SPDX-License-Identifier: Apache-2.0
// The simulated modem without its bookkeeping: it works out the answer to a request once and
// repeats it whenever the same request comes again. What is measured beside it is the other side.
// It takes the options of qorext_modem, and has no control socket.
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

class Answers {
 public:
  // The packet that answers; empty when what came is no request.
  const Bytes& answer(uint32_t service_id, std::span<const uint8_t> packet) {
    static const Bytes nothing;
    auto header = qmi_idl::load_header(packet);
    if (!header || header->type != qmi_idl::WireType::request) return nothing;
    Bytes& answer = answer_to(service_id, *header, packet.subspan(qmi_idl::kHeaderSize));
    auto answered = *qmi_idl::load_header(answer);
    answered.transaction = header->transaction;
    qmi_idl::store_header(answered, std::span(answer).first<qmi_idl::kHeaderSize>());
    return answer;
  }

 private:
  Bytes& answer_to(uint32_t service_id, const Header& header, std::span<const uint8_t> tlvs) {
    // Service, message id, TLVs.
    key_.assign({static_cast<char>(service_id), static_cast<char>(header.message_id),
                 static_cast<char>(header.message_id >> 8)});
    key_.append(tlvs.begin(), tlvs.end());
    auto found = answers_.find(key_);
    if (found != answers_.end()) return found->second;
    auto& service = *modem::find_service(service_id);
    return answers_[key_] = modem::respond(device_, service, header, tlvs);
  }

  modem::Device device_{modem::factory_state(), modem::factory_state(), {}};
  std::unordered_map<std::string, Bytes> answers_;
  std::string key_;
};

void serve(qmi_transport::Server& server) {
  Answers answers;
  std::vector<uint8_t> buffer(qmi_transport::kMaxPacketSize);
  while (qmi_transport::wait_for(server.fd(), POLLIN, qmi_transport::Deadline::max())) {
    ServerEvent event = server.next(buffer);
    if (event.kind != ServerEvent::Kind::packet) continue;
    auto& answer = answers.answer(event.service, std::span(buffer).first(event.size));
    if (!answer.empty()) server.send(event.peer, answer);
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
