// SPDX-License-Identifier: Apache-2.0
// The name service over Unix sockets, and the role that a connection's first packet gives it.
#include <errno.h>

#include <algorithm>

#include "platform/linux/qmi_transport/unix_server.h"
#include "platform/linux/qmi_transport/unix_socket.h"

namespace qmi_transport {
namespace {

constexpr uint32_t kNode = 1;

// Not queued: control packets are few, so a watcher without room for one does not read, and is
// closed.
bool send_control(int socket, uint32_t type, const ServerAddress& server) {
  return unix_send(socket, encode_control({type, server}), Deadline::min()) == Status::ok;
}

}  // namespace

// Port numbers are not reused, so they identify an instance for the server's lifetime.
bool UnixServer::publish(uint32_t service, uint32_t instance) {
  bool is_up = std::any_of(servers_.begin(), servers_.end(), [&](const ServerAddress& server) {
    return server.service == service && server.instance == instance;
  });
  if (is_up) {
    errno = EADDRINUSE;
    return false;
  }
  servers_.push_back({service, instance, kNode, ++last_port_});
  notify_watchers(QRTR_TYPE_NEW_SERVER, servers_.back());
  return true;
}

void UnixServer::withdraw(uint32_t service) {
  withdraw_if([=](const ServerAddress& server) { return server.service == service; });
}

void UnixServer::withdraw_instance(uint32_t service, uint32_t instance) {
  withdraw_if([=](const ServerAddress& server) {
    return server.service == service && server.instance == instance;
  });
}

template <typename Condition>
void UnixServer::withdraw_if(Condition condition) {
  for (const ServerAddress& server : servers_) {
    if (condition(server)) notify_watchers(QRTR_TYPE_DEL_SERVER, server);
  }
  std::erase_if(servers_, condition);
  std::erase_if(connections_, [&](const Entry& entry) {
    return entry.second.role == Role::client && condition(entry.second.server);
  });
}

// A watcher that is closed reads `gone` and begins a new watch, which has a complete list.
void UnixServer::notify_watchers(uint32_t type, const ServerAddress& server) {
  std::erase_if(connections_, [&](const Entry& entry) {
    const Connection& watcher = entry.second;
    bool is_affected = watcher.role == Role::watcher && watcher.server.service == server.service;
    return is_affected && !send_control(watcher.socket.get(), type, server);
  });
}

// Only an undecided connection may send a control packet; anything else is a protocol error.
bool UnixServer::decide_role(Connection& connection, std::span<const uint8_t> packet) {
  auto control = decode_control(packet);
  if (!control || connection.role != Role::undecided) return false;
  if (control->type == QRTR_TYPE_NEW_LOOKUP) {
    return begin_watch(connection, control->server.service);
  }
  return control->type == QRTR_TYPE_HELLO && attach(connection, *control);
}

// Ends the list with an all-zero server, as the QRTR name service does.
bool UnixServer::begin_watch(Connection& connection, uint32_t service) {
  connection.role = Role::watcher;
  connection.server.service = service;
  int socket = connection.socket.get();
  for (const ServerAddress& server : servers_) {
    if (server.service == service && !send_control(socket, QRTR_TYPE_NEW_SERVER, server))
      return false;
  }
  return send_control(socket, QRTR_TYPE_NEW_SERVER, {});
}

// Node and port identify an instance uniquely, so a client of an instance that was withdrawn and
// published again is refused.
bool UnixServer::attach(Connection& connection, const Control& hello) {
  auto server = std::find_if(servers_.begin(), servers_.end(), [&](const ServerAddress& each) {
    return each.node == hello.server.node && each.port == hello.server.port;
  });
  if (server == servers_.end()) return false;
  connection.role = Role::client;
  connection.server = *server;
  return send_control(connection.socket.get(), QRTR_TYPE_HELLO, hello.server);
}

}  // namespace qmi_transport
