// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <libqrtr.h>
#include <poll.h>

#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/qrtr_socket.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_transport {
namespace {

constexpr std::chrono::seconds kListTimeout{1};

// A socket that receives the announcements of one service. Looks up all versions: a lookup for one
// version would match only instance 0 of it.
ScopedFd lookup_socket(uint32_t service) {
  ScopedFd socket = qrtr_socket();
  if (!socket || qrtr_new_lookup(socket.get(), service, 0, 0) < 0) return {};
  return socket;
}

class QrtrWatch final : public ServiceWatch {
 public:
  QrtrWatch(ScopedFd socket, const ServerFilter& filter)
      : socket_(std::move(socket)), filter_(filter) {}

  int fd() const override { return socket_.get(); }

  Status next(Announcement& announcement) override {
    std::array<uint8_t, kControlSize> packet;
    QrtrAddress from;
    Received received = qrtr_receive(socket_.get(), packet, from);
    if (received.status == Status::too_long) return Status::nothing;  // no control packet
    if (received.status != Status::ok) return received.status;
    auto control = qrtr_control(std::span(packet).first(received.size), from);
    return read_announcement(control, filter_, announcement);
  }

  // Whether the server is in the list of the servers present. Sets errno when it is not.
  bool has(const ServerAddress& server, Deadline deadline) {
    Announcement announcement{};
    while (wait_for(fd(), POLLIN, deadline)) {
      Status status = next(announcement);
      if (status == Status::nothing) continue;
      if (status != Status::ok) return false;
      bool is_up = announcement.kind == Announcement::Kind::appeared;
      if (is_up && announcement.server == server) return true;
      if (announcement.kind == Announcement::Kind::end_of_list) break;
    }
    errno = ENODEV;
    return false;
  }

  ScopedFd take_socket() { return std::move(socket_); }

 private:
  ScopedFd socket_;
  ServerFilter filter_;
};

class QrtrChannel final : public Channel {
 public:
  QrtrChannel(ScopedFd socket, const ServerAddress& server)
      : socket_(std::move(socket)), server_{server.node, server.port} {}

  int fd() const override { return socket_.get(); }
  Status send(std::span<const uint8_t> packet, Deadline deadline) override {
    return qrtr_send(socket_.get(), server_, packet, deadline);
  }
  Received receive(std::span<uint8_t> buffer) override {
    QrtrAddress from;
    Received received = qrtr_receive(socket_.get(), buffer, from);
    return filtered(received, buffer, from);
  }
  // A blocking receive would hold the kernel's socket lock, so that no thread could send meanwhile.
  Received receive_waiting(std::span<uint8_t> buffer) override {
    if (!wait_for(socket_.get(), POLLIN, in(kReceiveTime))) return {Status::nothing};
    return receive(buffer);
  }

 private:
  // Any QRTR socket may send to this one; drops what does not come from the server.
  Received filtered(Received received, std::span<uint8_t> buffer, const QrtrAddress& from) const {
    bool is_packet = received.status == Status::ok || received.status == Status::too_long;
    if (!is_packet || from == server_) return received;
    return {is_server_gone(buffer.first(received.size), from) ? Status::gone : Status::nothing};
  }

  bool is_server_gone(std::span<uint8_t> packet, const QrtrAddress& from) const {
    auto control = qrtr_control(packet, from);
    return control && control->type == QRTR_TYPE_DEL_SERVER &&
           QrtrAddress{control->server.node, control->server.port} == server_;
  }

  ScopedFd socket_;
  QrtrAddress server_;
};

}  // namespace

std::unique_ptr<ServiceWatch> qrtr_watch(uint32_t service, uint32_t version) {
  ScopedFd socket = lookup_socket(service);
  if (!socket) return nullptr;
  return std::make_unique<QrtrWatch>(std::move(socket), ServerFilter{service, version});
}

// The channel uses the lookup's socket, so that it also receives the server's DEL_SERVER.
std::unique_ptr<Channel> qrtr_channel(const ServerAddress& server) {
  ScopedFd socket = lookup_socket(server.service);
  if (!socket) return nullptr;
  QrtrWatch watch(std::move(socket), {server.service, version_of(server.instance)});
  if (!watch.has(server, in(kListTimeout))) return nullptr;
  return std::make_unique<QrtrChannel>(watch.take_socket(), server);
}

}  // namespace qmi_transport
