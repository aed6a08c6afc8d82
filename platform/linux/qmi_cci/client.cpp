// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/client.h"

#include "platform/linux/qmi_cci/threads.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {

using qmi_idl::Direction;
using qmi_idl::Message;

// A client without a callback queues nothing, so it neither reads nor checks the bound.
Client::Client(std::unique_ptr<qmi_transport::Channel> channel, const qmi_idl::Service& service,
               Callback callback)
    : service_(service),
      callback_(callback),
      indications_(callback.function == nullptr ? 0 : queue_bound_from_environment()),
      connection_(std::move(channel), indication_handler()) {}

Connection::OnIndication Client::indication_handler() {
  if (callback_.function == nullptr) return {};
  return [this](std::span<const uint8_t> packet) { indications_.push(packet); };
}

// The callback thread holds a reference: when the callback releases its own client, the client must
// live until the callback has returned. The reader needs none, as close() always joins it.
void Client::start() {
  if (callback_.function == nullptr) return;
  connection_.prepare_reader();
  reader_ = start_thread([this] { connection_.run_reader(); });
  callback_thread_ = start_thread([self = shared_from_this()] {
    self->indications_.call_back(self.get(), self->callback_.function, self->callback_.data);
  });
}

// The queue is stopped first, so that no further callback begins while the other threads end. The
// last burst is logged when the reader, which adds to it, has ended.
void Client::close() {
  indications_.stop();
  connection_.stop();
  if (reader_.joinable()) reader_.join();
  indications_.report_burst();
  if (!callback_thread_.joinable()) return;
  if (callback_thread_.get_id() == std::this_thread::get_id()) {
    callback_thread_.detach();  // the callback has called qmi_client_release()
  } else {
    callback_thread_.join();
  }
}

// The structures' sizes are the only protection against a caller with other definitions of them.
// The packet is on the stack, so that a request needs no memory.
int Client::send(uint32_t message_id, std::span<const uint8_t> request, std::span<uint8_t> response,
                 std::chrono::milliseconds timeout) {
  auto deadline = qmi_transport::in(timeout);  // for sending and waiting together
  const Message* asked = find(service_, Direction::request, message_id);
  const Message* expected = find(service_, Direction::response, message_id);
  if (asked == nullptr || expected == nullptr) return QMI_INVALID_PARAM_ERR;
  if (request.size() != asked->size || response.size() != expected->size) {
    return QMI_INVALID_PARAM_ERR;
  }

  uint8_t packet[qmi_transport::kMaxPacketSize];
  ssize_t length = encode(*asked, request, std::span(packet).subspan(qmi_idl::kHeaderSize));
  if (length < 0) return QMI_MALFORMED_ERR;

  Exchange exchange{.expected = *expected, .structure = response};
  size_t size = qmi_idl::kHeaderSize + static_cast<size_t>(length);
  return connection_.run(exchange, std::span(packet).first(size), deadline);
}

}  // namespace qmi_cci
