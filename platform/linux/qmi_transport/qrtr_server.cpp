// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <libqrtr.h>

#include <algorithm>
#include <deque>
#include <map>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/output_queue.h"
#include "platform/linux/qmi_transport/qrtr_socket.h"

namespace qmi_transport {
namespace {

constexpr uint64_t kTimer = 0;  // the key of its epoll events; those of ports count from 1
// The kernel does not report when a client's queue has room again. The server retries, less often
// while no client makes progress.
constexpr std::chrono::milliseconds kMinPause{1};
constexpr std::chrono::milliseconds kMaxPause{50};

// Runs on one thread and has no locks.
class QrtrServer final : public Server {
 public:
  explicit QrtrServer(const ServerLimits& limits) : limits_(limits) {}

  // False when the server cannot be used, with errno set.
  bool prepare() { return epoll_ && timer_ && add_to_epoll(epoll_.get(), timer_.fd(), kTimer); }

  int fd() const override { return epoll_.get(); }
  bool publish(uint32_t service, uint32_t instance) override;
  void withdraw(uint32_t service) override;
  void withdraw_instance(uint32_t service, uint32_t instance) override;
  ServerEvent next(std::span<uint8_t> buffer) override;
  Status send(Peer peer, std::span<const uint8_t> packet) override;
  bool has_room(uint32_t service) const override;
  std::vector<Peer> peers(uint32_t service) const override;

 private:
  // One published instance. Each has its own socket, whose address is the server's.
  struct Port {
    uint32_t service = 0;
    uint32_t instance = 0;
    ScopedFd socket;
  };
  struct Client {
    uint32_t service;
    uint64_t port;  // its key in ports_
    QrtrAddress address;
    OutputQueue output;
  };

  ServerEvent on_timer();
  bool flush_all();
  void drop_stuck();
  Status drop(Peer peer);
  OutputQueue::Send sender(const Client& client) const;
  template <typename Condition>
  void withdraw_if(Condition condition);
  ServerEvent on_control(uint64_t port, const Control& control);
  std::map<Peer, Client>::iterator find_client(uint64_t port, const QrtrAddress& address);
  Peer peer_of(uint64_t port, const QrtrAddress& address);

  ScopedFd epoll_{epoll_create1(EPOLL_CLOEXEC)};
  Timer timer_;
  std::chrono::milliseconds pause_ = kMinPause;
  ServerLimits limits_;
  std::map<uint64_t, Port> ports_;
  std::map<Peer, Client> clients_;
  std::deque<ServerEvent> reports_;  // for later calls of next()
  uint64_t last_port_ = 0;
  Peer last_peer_ = 0;
};

// The name service knows the version and the instance number as two values.
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

void QrtrServer::withdraw(uint32_t service) {
  withdraw_if([=](const Port& port) { return port.service == service; });
}

void QrtrServer::withdraw_instance(uint32_t service, uint32_t instance) {
  withdraw_if(
      [=](const Port& port) { return port.service == service && port.instance == instance; });
}

// qrtr_bye() withdraws the server at once. Closing the socket would do so only when no other
// process, such as a forked child, holds it open.
template <typename Condition>
void QrtrServer::withdraw_if(Condition condition) {
  for (const auto& [key, port] : ports_) {
    if (!condition(port)) continue;
    auto version = static_cast<uint16_t>(version_of(port.instance));
    auto number = static_cast<uint16_t>(port.instance >> kInstanceShift);
    qrtr_bye(port.socket.get(), port.service, version, number);
  }
  std::erase_if(ports_, [&](const auto& entry) { return condition(entry.second); });
  std::erase_if(clients_, [&](const auto& entry) { return !ports_.contains(entry.second.port); });
}

// Takes one event a call. epoll is level-triggered, so the packets that are left are reported
// again.
ServerEvent QrtrServer::next(std::span<uint8_t> buffer) {
  epoll_event event{};
  if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) return {};
  uint64_t key = event.data.u64;
  if (key == kTimer) return on_timer();
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

// DEL_CLIENT goes to every server of the node, whether or not the client has used it.
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

// QRTR has no connections: a sender becomes a client with its first packet.
Peer QrtrServer::peer_of(uint64_t port, const QrtrAddress& address) {
  auto known = find_client(port, address);
  if (known != clients_.end()) return known->first;
  clients_[++last_peer_] = {ports_[port].service, port, address, {}};
  return last_peer_;
}

// Every client of an instance is sent to from the instance's socket, so its address is the sender.
OutputQueue::Send QrtrServer::sender(const Client& client) const {
  int socket = ports_.at(client.port).socket.get();
  return [socket, &client](std::span<const uint8_t> packet) {
    return qrtr_send(socket, client.address, packet, Deadline::min());
  };
}

// Does not restart a running timer: a steady flow of packets would postpone the retry.
Status QrtrServer::send(Peer peer, std::span<const uint8_t> packet) {
  auto found = clients_.find(peer);
  if (found == clients_.end()) return Status::gone;
  Client& client = found->second;
  Status status = client.output.put(packet, limits_.queue, sender(client));
  bool has_output = !client.output.empty();  // read before the client may be erased
  if (status == Status::nothing) return drop(peer);
  if (status == Status::gone) clients_.erase(found);
  if (has_output && !timer_.is_running()) timer_.start(pause_);
  return status;
}

// Returns one report a call. The pause doubles while no client makes progress.
ServerEvent QrtrServer::on_timer() {
  timer_.expire();
  pause_ = flush_all() ? kMinPause : std::min(2 * pause_, kMaxPause);
  drop_stuck();
  ServerEvent report{};
  if (!reports_.empty()) {
    report = reports_.front();
    reports_.pop_front();
  }
  bool has_output = std::any_of(clients_.begin(), clients_.end(),
                                [](const auto& entry) { return !entry.second.output.empty(); });
  if (has_output) timer_.start(pause_);
  if (!reports_.empty()) timer_.start({});
  return report;
}

// Returns whether any client has made progress. A client that a send finds gone is
// reported here; its DEL_CLIENT is then ignored.
bool QrtrServer::flush_all() {
  bool has_progress = false;
  for (auto each = clients_.begin(); each != clients_.end();) {
    auto& [peer, client] = *each;
    size_t before = client.output.bytes();
    bool is_gone = client.output.flush(sender(client)) == Status::gone;
    has_progress = has_progress || client.output.bytes() != before;
    if (is_gone) reports_.push_back({ServerEvent::Kind::peer_gone, client.service, peer, 0});
    each = is_gone ? clients_.erase(each) : std::next(each);
  }
  return has_progress;
}

void QrtrServer::drop_stuck() {
  std::vector<Peer> stuck;
  for (const auto& [peer, client] : clients_) {
    if (client.output.is_stuck(limits_.stuck_after)) stuck.push_back(peer);
  }
  for (Peer peer : stuck) drop(peer);
}

// Always returns `gone`. A later call of next() reports the dropped peer.
Status QrtrServer::drop(Peer peer) {
  auto found = clients_.find(peer);
  const Client& client = found->second;
  reports_.push_back(
      {ServerEvent::Kind::peer_dropped, client.service, peer, client.output.bytes()});
  clients_.erase(found);
  timer_.start({});
  return Status::gone;
}

bool QrtrServer::has_room(uint32_t service) const {
  Pace pace;
  for (const auto& [peer, client] : clients_) {
    if (client.service == service) pace.add(client.output);
  }
  return pace.has_room();
}

std::vector<Peer> QrtrServer::peers(uint32_t service) const {
  std::vector<Peer> found;
  for (const auto& [peer, client] : clients_) {
    if (client.service == service) found.push_back(peer);
  }
  return found;
}

}  // namespace

std::unique_ptr<Server> qrtr_serve(const ServerLimits& limits) {
  if (!qrtr_socket()) return nullptr;
  auto server = std::make_unique<QrtrServer>(limits);
  return server->prepare() ? std::move(server) : nullptr;
}

}  // namespace qmi_transport
