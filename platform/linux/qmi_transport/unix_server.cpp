#include <errno.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "control.h"
#include "epoll.h"
#include "implementations.h"
#include "unix_socket.h"
#include "wait.h"

namespace qmi_transport {
namespace {

constexpr uint32_t kNode = 1;
constexpr int kBacklog = 64;
constexpr uint64_t kListener = 0;  // in epoll's data; the peers count from 1
// Connections beyond these are closed at once, so that no flood of them exhausts the descriptors.
constexpr size_t kMaxConnections = 256;
// Room for a burst of indications, so that a busy client does not hold up the others.
constexpr int kSendBuffer = 1 << 20;

// A file that a listening socket was bound to, removed with it unless another has replaced it.
class SocketFile {
 public:
  explicit SocketFile(const std::string& path) : path_(path) { lstat(path_.c_str(), &identity_); }
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;
  ~SocketFile() {
    struct stat now {};
    if (lstat(path_.c_str(), &now) != 0) return;
    if (now.st_dev == identity_.st_dev && now.st_ino == identity_.st_ino) unlink(path_.c_str());
  }

 private:
  std::string path_;
  struct stat identity_ {};
};

class UnixServer final : public Server {
 public:
  UnixServer(const std::string& path, ScopedFd listener, ScopedFd epoll,
             std::chrono::milliseconds patience)
      : file_(path),
        listener_(std::move(listener)),
        epoll_(std::move(epoll)),
        patience_(patience) {}

  int fd() const override { return epoll_.get(); }
  bool publish(uint32_t service, uint32_t instance) override;
  void withdraw(uint32_t service) override;
  ServerEvent next(std::span<uint8_t> buffer) override;
  Status send(Peer peer, std::span<const uint8_t> packet) override;
  std::vector<Peer> peers(uint32_t service) const override;

 private:
  enum class Role { newcomer, watcher, client };
  struct Connection {
    ScopedFd socket;
    Role role = Role::newcomer;
    uint32_t service = 0;  // watched or used
  };

  void accept_one();
  ServerEvent read_from(Peer peer, Connection& connection, std::span<uint8_t> buffer);
  bool greet(Connection& connection, std::span<const uint8_t> packet);
  bool begin_watch(Connection& connection, uint32_t service);
  bool attach(Connection& connection, const Control& hello);
  void announce(uint32_t type, const ServerAddress& server);

  SocketFile file_;
  ScopedFd listener_;
  ScopedFd epoll_;
  std::chrono::milliseconds patience_;
  std::vector<ServerAddress> servers_;
  std::map<Peer, Connection> connections_;
  Peer last_peer_ = kListener;
  uint32_t last_port_ = 0;
};

// Name service packets are few: a watcher whose queue is full of them does not read.
bool tell(int socket, uint32_t type, const ServerAddress& server) {
  return unix_send(socket, encode_control({type, server}), Deadline::min()) == Status::ok;
}

bool UnixServer::publish(uint32_t service, uint32_t instance) {
  bool is_up = std::any_of(servers_.begin(), servers_.end(), [&](const ServerAddress& server) {
    return server.service == service && server.instance == instance;
  });
  if (is_up) {
    errno = EADDRINUSE;
    return false;
  }
  servers_.push_back({service, instance, kNode, ++last_port_});
  announce(QRTR_TYPE_NEW_SERVER, servers_.back());
  return true;
}

void UnixServer::withdraw(uint32_t service) {
  auto of_service = [service](const auto& entry) { return entry.service == service; };
  for (const ServerAddress& server : servers_) {
    if (of_service(server)) announce(QRTR_TYPE_DEL_SERVER, server);
  }
  std::erase_if(servers_, of_service);
  std::erase_if(connections_, [&](const auto& entry) {
    return entry.second.role == Role::client && of_service(entry.second);
  });
}

void UnixServer::announce(uint32_t type, const ServerAddress& server) {
  std::erase_if(connections_, [&](const auto& entry) {
    const Connection& watcher = entry.second;
    bool concerned = watcher.role == Role::watcher && watcher.service == server.service;
    return concerned && !tell(watcher.socket.get(), type, server);
  });
}

ServerEvent UnixServer::next(std::span<uint8_t> buffer) {
  epoll_event event{};
  if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) return {};
  Peer peer = event.data.u64;
  if (peer == kListener) {
    accept_one();
    return {};
  }
  auto found = connections_.find(peer);
  return found == connections_.end() ? ServerEvent{} : read_from(peer, found->second, buffer);
}

void UnixServer::accept_one() {
  ScopedFd socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket || connections_.size() >= kMaxConnections) return;
  setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
  if (!add_to_epoll(epoll_.get(), socket.get(), ++last_peer_)) return;
  connections_[last_peer_].socket = std::move(socket);
}

ServerEvent UnixServer::read_from(Peer peer, Connection& connection, std::span<uint8_t> buffer) {
  uint32_t service = connection.service;
  bool is_client = connection.role == Role::client;
  Received received = unix_receive(connection.socket.get(), buffer);
  if (received.status == Status::nothing) return {};

  if (received.status == Status::ok && is_client) {
    return {ServerEvent::Kind::packet, service, peer, received.size};
  }
  if (received.status == Status::ok && greet(connection, buffer.first(received.size))) return {};
  connections_.erase(peer);
  if (!is_client) return {};
  return {ServerEvent::Kind::peer_gone, service, peer, 0};
}

bool UnixServer::greet(Connection& connection, std::span<const uint8_t> packet) {
  auto control = decode_control(packet);
  if (!control || connection.role != Role::newcomer) return false;
  if (control->type == QRTR_TYPE_NEW_LOOKUP) {
    return begin_watch(connection, control->server.service);
  }
  return control->type == QRTR_TYPE_HELLO && attach(connection, *control);
}

bool UnixServer::begin_watch(Connection& connection, uint32_t service) {
  connection.role = Role::watcher;
  connection.service = service;
  int socket = connection.socket.get();
  for (const ServerAddress& server : servers_) {
    if (server.service == service && !tell(socket, QRTR_TYPE_NEW_SERVER, server)) return false;
  }
  return tell(socket, QRTR_TYPE_NEW_SERVER, {});
}

bool UnixServer::attach(Connection& connection, const Control& hello) {
  auto server = std::find_if(servers_.begin(), servers_.end(), [&](const ServerAddress& each) {
    return each.node == hello.server.node && each.port == hello.server.port;
  });
  if (server == servers_.end()) return false;
  connection.role = Role::client;
  connection.service = server->service;
  return tell(connection.socket.get(), QRTR_TYPE_HELLO, hello.server);
}

Status UnixServer::send(Peer peer, std::span<const uint8_t> packet) {
  auto found = connections_.find(peer);
  if (found == connections_.end()) return Status::gone;
  Status status = unix_send(found->second.socket.get(), packet, in(patience_));
  if (status == Status::nothing) status = Status::gone;
  if (status == Status::gone) connections_.erase(found);
  return status;
}

std::vector<Peer> UnixServer::peers(uint32_t service) const {
  std::vector<Peer> found;
  for (const auto& [peer, connection] : connections_) {
    if (connection.role == Role::client && connection.service == service) found.push_back(peer);
  }
  return found;
}

bool is_socket(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

// Removes a socket file that no process listens on any more.
bool make_way(const std::string& path) {
  bool is_stale = !unix_connect(path) && errno == ECONNREFUSED && is_socket(path);
  if (is_stale) return unlink(path.c_str()) == 0;
  errno = EADDRINUSE;
  return false;
}

ScopedFd listen_at(const std::string& path) {
  auto address = unix_address(path);
  if (!address) return {};
  ScopedFd listener = unix_socket();
  if (!listener) return {};

  auto* name = reinterpret_cast<const sockaddr*>(&*address);
  bool bound = bind(listener.get(), name, sizeof(*address)) == 0;
  if (!bound && errno == EADDRINUSE && make_way(path)) {
    bound = bind(listener.get(), name, sizeof(*address)) == 0;
  }
  if (!bound || listen(listener.get(), kBacklog) != 0) return {};
  return listener;
}

}  // namespace

std::unique_ptr<Server> unix_serve(const std::string& path, std::chrono::milliseconds patience) {
  ScopedFd listener = listen_at(path);
  if (!listener) return nullptr;
  ScopedFd epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll || !add_to_epoll(epoll.get(), listener.get(), kListener)) return nullptr;
  return std::make_unique<UnixServer>(path, std::move(listener), std::move(epoll), patience);
}

}  // namespace qmi_transport
