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

// A socket that the name service tells about one service. All versions are asked for: the name
// service would take a version without an instance number for the number of instance 0.
ScopedFd lookup_socket(uint32_t service) {
  ScopedFd socket = qrtr_socket();
  if (!socket || qrtr_new_lookup(socket.get(), service, 0, 0) < 0) return {};
  return socket;
}

class QrtrWatch final : public ServiceWatch {
 public:
  QrtrWatch(ScopedFd socket, const Wanted& wanted) : socket_(std::move(socket)), wanted_(wanted) {}

  int fd() const override { return socket_.get(); }

  Status next(Announcement& announcement) override {
    std::array<uint8_t, kControlSize> packet;
    QrtrAddress from;
    Received received = qrtr_receive(socket_.get(), packet, from);
    if (received.status == Status::too_long) return Status::nothing;  // not of the name service
    if (received.status != Status::ok) return received.status;
    auto control = qrtr_control(std::span(packet).first(received.size), from);
    return read_announcement(control, wanted_, announcement);
  }

  // Reads the list of the servers present; true when this one is among them.
  bool has(const ServerAddress& server, Deadline deadline) {
    Announcement told{};
    while (wait_for(fd(), POLLIN, deadline)) {
      Status status = next(told);
      if (status == Status::nothing) continue;
      if (status != Status::ok) return false;
      if (told.kind == Announcement::Kind::appeared && told.server == server) return true;
      if (told.kind == Announcement::Kind::end_of_list) break;
    }
    errno = ENODEV;
    return false;
  }

  ScopedFd take_socket() { return std::move(socket_); }

 private:
  ScopedFd socket_;
  Wanted wanted_;
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
    return judged(qrtr_receive(socket_.get(), buffer, from), buffer, from);
  }
  // The kernel keeps such a socket locked while a receive waits: nobody could send meanwhile.
  Received receive_waiting(std::span<uint8_t> buffer) override {
    if (!wait_for(socket_.get(), POLLIN, in(kReceiveTime))) return {Status::nothing};
    return receive(buffer);
  }

 private:
  // Only the server's packets are for the caller.
  Received judged(Received received, std::span<uint8_t> buffer, const QrtrAddress& from) const {
    bool is_packet = received.status == Status::ok || received.status == Status::too_long;
    if (!is_packet || from == server_) return received;
    return {tells_of_end(buffer.first(received.size), from) ? Status::gone : Status::nothing};
  }

  bool tells_of_end(std::span<uint8_t> packet, const QrtrAddress& from) const {
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
  return std::make_unique<QrtrWatch>(std::move(socket), Wanted{service, version});
}

// The channel's socket keeps its lookup, so that the channel hears of its server's end.
std::unique_ptr<Channel> qrtr_channel(const ServerAddress& server) {
  ScopedFd socket = lookup_socket(server.service);
  if (!socket) return nullptr;
  QrtrWatch watch(std::move(socket), {server.service, version_of(server.instance)});
  if (!watch.has(server, in(kListTimeout))) return nullptr;
  return std::make_unique<QrtrChannel>(watch.take_socket(), server);
}

}  // namespace qmi_transport
