#include <errno.h>
#include <libqrtr.h>

#include <algorithm>
#include <map>

#include "epoll.h"
#include "implementations.h"
#include "qrtr_socket.h"
#include "wait.h"

namespace qmi_transport {
namespace {

class QrtrServer final : public Server {
 public:
  QrtrServer(ScopedFd epoll, std::chrono::milliseconds patience)
      : epoll_(std::move(epoll)), patience_(patience) {}

  int fd() const override { return epoll_.get(); }
  bool publish(uint32_t service, uint32_t instance) override;
  void withdraw(uint32_t service) override;
  ServerEvent next(std::span<uint8_t> buffer) override;
  Status send(Peer peer, std::span<const uint8_t> packet) override;
  std::vector<Peer> peers(uint32_t service) const override;

 private:
  // One published instance; every one has a socket of its own.
  struct Port {
    uint32_t service = 0;
    uint32_t instance = 0;
    ScopedFd socket;
  };
  struct Client {
    uint32_t service;
    uint64_t port;  // key of its Port
    QrtrAddress address;
  };

  ServerEvent on_control(uint64_t port, const Control& control);
  std::map<Peer, Client>::iterator find_client(uint64_t port, const QrtrAddress& address);
  Peer peer_of(uint64_t port, const QrtrAddress& address);

  ScopedFd epoll_;
  std::chrono::milliseconds patience_;
  std::map<uint64_t, Port> ports_;
  std::map<Peer, Client> clients_;
  uint64_t last_port_ = 0;
  Peer last_peer_ = 0;
};

bool QrtrServer::publish(uint32_t service, uint32_t instance) {
  bool is_up = std::any_of(ports_.begin(), ports_.end(), [&](const auto& entry) {
    return entry.second.service == service && entry.second.instance == instance;
  });
  if (is_up) {
    errno = EADDRINUSE;
    return false;
  }
  ScopedFd socket = qrtr_socket();
  if (!socket || !add_to_epoll(epoll_.get(), socket.get(), last_port_ + 1)) return false;
  auto version = static_cast<uint16_t>(version_of(instance));
  auto number = static_cast<uint16_t>(instance >> kInstanceShift);
  if (qrtr_publish(socket.get(), service, version, number) < 0) return false;
  ports_[++last_port_] = {service, instance, std::move(socket)};
  return true;
}

// The kernel tells of a closed socket by itself, but not before the last holder has closed it.
void QrtrServer::withdraw(uint32_t service) {
  for (const auto& [key, port] : ports_) {
    if (port.service != service) continue;
    auto version = static_cast<uint16_t>(version_of(port.instance));
    auto number = static_cast<uint16_t>(port.instance >> kInstanceShift);
    qrtr_bye(port.socket.get(), service, version, number);
  }
  auto of_service = [service](const auto& entry) { return entry.second.service == service; };
  std::erase_if(ports_, of_service);
  std::erase_if(clients_, of_service);
}

ServerEvent QrtrServer::next(std::span<uint8_t> buffer) {
  epoll_event event{};
  if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) return {};
  uint64_t key = event.data.u64;
  auto port = ports_.find(key);
  if (port == ports_.end()) return {};

  QrtrAddress from;
  Received received = qrtr_receive(port->second.socket.get(), buffer, from);
  if (received.status != Status::ok) return {};
  if (auto control = qrtr_control(buffer.first(received.size), from)) {
    return on_control(key, *control);
  }
  return {ServerEvent::Kind::packet, port->second.service, peer_of(key, from), received.size};
}

ServerEvent QrtrServer::on_control(uint64_t port, const Control& control) {
  if (control.type != QRTR_TYPE_DEL_CLIENT) return {};
  auto client = find_client(port, {control.server.node, control.server.port});
  if (client == clients_.end()) return {};
  ServerEvent event{ServerEvent::Kind::peer_gone, client->second.service, client->first, 0};
  clients_.erase(client);
  return event;
}

std::map<Peer, QrtrServer::Client>::iterator QrtrServer::find_client(uint64_t port,
                                                                     const QrtrAddress& address) {
  return std::find_if(clients_.begin(), clients_.end(), [&](const auto& entry) {
    return entry.second.port == port && entry.second.address == address;
  });
}

Peer QrtrServer::peer_of(uint64_t port, const QrtrAddress& address) {
  auto known = find_client(port, address);
  if (known != clients_.end()) return known->first;
  clients_[++last_peer_] = {ports_[port].service, port, address};
  return last_peer_;
}

Status QrtrServer::send(Peer peer, std::span<const uint8_t> packet) {
  auto client = clients_.find(peer);
  if (client == clients_.end()) return Status::gone;
  const auto& [service, port, address] = client->second;
  Status status = qrtr_send(ports_[port].socket.get(), address, packet, in(patience_));
  if (status == Status::nothing) status = Status::gone;
  if (status == Status::gone) clients_.erase(client);
  return status;
}

std::vector<Peer> QrtrServer::peers(uint32_t service) const {
  std::vector<Peer> found;
  for (const auto& [peer, client] : clients_) {
    if (client.service == service) found.push_back(peer);
  }
  return found;
}

}  // namespace

std::unique_ptr<Server> qrtr_serve(std::chrono::milliseconds patience) {
  if (!qrtr_socket()) return nullptr;
  ScopedFd epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll) return nullptr;
  return std::make_unique<QrtrServer>(std::move(epoll), patience);
}

}  // namespace qmi_transport
