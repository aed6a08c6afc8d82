// SPDX-License-Identifier: Apache-2.0
// The server's end of the Unix transport. Runs on one thread and has no locks.
#pragma once

#include <sys/epoll.h>

#include <deque>
#include <map>

#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/output_queue.h"
#include "platform/linux/qmi_transport/unix_socket.h"

namespace qmi_transport {

class UnixServer final : public Server {
 public:
  UnixServer(const std::string& path, ScopedFd listener, const ServerLimits& limits)
      : file_(path), listener_(std::move(listener)), limits_(limits) {}

  // False when the server cannot be used, with errno set.
  bool prepare();

  int fd() const override { return epoll_.get(); }
  bool publish(uint32_t service, uint32_t instance) override;
  void withdraw(uint32_t service) override;
  void withdraw_instance(uint32_t service, uint32_t instance) override;
  ServerEvent next(std::span<uint8_t> buffer) override;
  Status send(Peer peer, std::span<const uint8_t> packet) override;
  bool has_room(uint32_t service) const override;
  std::vector<Peer> peers(uint32_t service) const override;

 private:
  enum class Role { undecided, watcher, client };  // decided by the first packet
  struct Connection {
    ScopedFd socket;
    Role role = Role::undecided;
    ServerAddress server;  // of a client; a watcher has only the service
    OutputQueue output;
  };
  using Entry = std::map<Peer, Connection>::value_type;

  // The name service and the first packets of connections: unix_services.cpp.
  bool decide_role(Connection& connection, std::span<const uint8_t> packet);
  bool begin_watch(Connection& connection, uint32_t service);
  bool attach(Connection& connection, const Control& hello);
  void notify_watchers(uint32_t type, const ServerAddress& server);
  template <typename Condition>
  void withdraw_if(Condition condition);

  // Sockets: unix_server.cpp.
  ServerEvent on_timer();
  void accept_one();
  void pause_accepting();
  bool close_undecided();
  ServerEvent serve(Entry& entry, uint32_t events, std::span<uint8_t> buffer);
  ServerEvent remove(Peer peer);
  Status flush(Entry& entry);
  Status drop(Peer peer);
  void drop_stuck();
  void start_timer();

  SocketFile file_;
  ScopedFd listener_;
  ScopedFd epoll_{epoll_create1(EPOLL_CLOEXEC)};
  Timer timer_;
  ServerLimits limits_;
  std::vector<ServerAddress> servers_;
  std::map<Peer, Connection> connections_;
  std::deque<ServerEvent> reports_;  // for later calls of next()
  Peer last_peer_ = 0;
  uint32_t last_port_ = 0;
  bool is_paused_ = false;             // the listener is not watched
  bool is_shortage_reported_ = false;  // of descriptors
};

}  // namespace qmi_transport
