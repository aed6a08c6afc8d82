// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <poll.h>

#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/unix_socket.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_transport {
namespace {

class UnixWatch final : public ServiceWatch {
 public:
  UnixWatch(ScopedFd socket, const ServerFilter& filter)
      : socket_(std::move(socket)), filter_(filter) {}

  int fd() const override { return socket_.get(); }

  Status next(Announcement& announcement) override {
    std::array<uint8_t, kControlSize> packet;
    Received received = unix_receive(socket_.get(), packet);
    if (received.status == Status::too_long) return Status::nothing;  // no control packet
    if (received.status != Status::ok) return received.status;
    auto control = decode_control(std::span(packet).first(received.size));
    return read_announcement(control, filter_, announcement);
  }

 private:
  ScopedFd socket_;
  ServerFilter filter_;
};

class UnixChannel final : public Channel {
 public:
  explicit UnixChannel(ScopedFd socket) : socket_(std::move(socket)) {}

  int fd() const override { return socket_.get(); }
  Status send(std::span<const uint8_t> packet, Deadline deadline) override {
    return unix_send(socket_.get(), packet, deadline);
  }
  Received receive(std::span<uint8_t> buffer) override {
    return unix_receive(socket_.get(), buffer);
  }
  Received receive_waiting(std::span<uint8_t> buffer) override {
    constexpr int kBlocking = 0;  // up to the socket's receive timeout
    return unix_receive(socket_.get(), buffer, kBlocking);
  }

 private:
  ScopedFd socket_;
};

// Connects and sends the packet that decides the connection's role.
ScopedFd connect_as(const std::string& path, const Control& first, Deadline deadline) {
  ScopedFd socket = unix_connect(path);
  if (!socket) return {};
  if (unix_send(socket.get(), encode_control(first), deadline) != Status::ok) return {};
  return socket;
}

// Whether the server confirms the attachment. Sets errno when it does not.
bool is_attached(int socket, Deadline deadline) {
  std::array<uint8_t, kControlSize> packet;
  errno = ETIMEDOUT;
  if (!wait_for(socket, POLLIN, deadline)) return false;
  Received received = unix_receive(socket, packet);
  if (received.status == Status::gone) errno = ECONNREFUSED;
  if (received.status == Status::too_long) errno = EPROTO;
  if (received.status != Status::ok) return false;
  auto control = decode_control(std::span(packet).first(received.size));
  errno = EPROTO;
  return control && control->type == QRTR_TYPE_HELLO;
}

}  // namespace

std::unique_ptr<ServiceWatch> unix_watch(const std::string& path, uint32_t service,
                                         uint32_t version) {
  Control lookup{QRTR_TYPE_NEW_LOOKUP, {.service = service, .instance = version}};
  ScopedFd socket = connect_as(path, lookup, in(kAttachTimeout));
  if (!socket) return nullptr;
  return std::make_unique<UnixWatch>(std::move(socket), ServerFilter{service, version});
}

std::unique_ptr<Channel> unix_channel(const std::string& path, const ServerAddress& server) {
  Deadline deadline = in(kAttachTimeout);
  ScopedFd socket = connect_as(path, {QRTR_TYPE_HELLO, server}, deadline);
  if (!socket || !is_attached(socket.get(), deadline)) return nullptr;
  if (!set_receive_timeout(socket.get(), kReceiveTime)) return nullptr;
  return std::make_unique<UnixChannel>(std::move(socket));
}

}  // namespace qmi_transport
