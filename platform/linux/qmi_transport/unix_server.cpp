// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/unix_server.h"
#include "platform/linux/qmi_transport/unix_socket.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_transport {
namespace {

// The keys of epoll events. Connections use their Peer, which counts from 1 and is never reused.
constexpr uint64_t kListener = 0;
constexpr uint64_t kTimer = UINT64_MAX;
// Beyond this limit a new connection replaces one that has sent nothing, or is closed when there is
// none, so that a flood of connections cannot use up the descriptors.
constexpr size_t kMaxConnections = 256;
// Large enough for a burst of indications, so that few of them are copied into an output queue.
constexpr int kSendBuffer = 1 << 20;
// The interval at which the timer retries slow clients and a paused listener.
constexpr std::chrono::milliseconds kTick = kAcceptPause;

// Sends without waiting.
OutputQueue::Send sender(int socket) {
  return [socket](std::span<const uint8_t> packet) {
    return unix_send(socket, packet, Deadline::min());
  };
}

}  // namespace

bool UnixServer::prepare() {
  return epoll_ && timer_ && add_to_epoll(epoll_.get(), listener_.get(), kListener) &&
         add_to_epoll(epoll_.get(), timer_.fd(), kTimer);
}

// Takes one event a call. epoll is level-triggered, so an event that is not handled completely,
// such as a second packet on a socket, is reported again.
ServerEvent UnixServer::next(std::span<uint8_t> buffer) {
  epoll_event event{};
  if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) return {};
  uint64_t key = event.data.u64;  // a copy, because find() cannot bind to a packed member
  if (key == kTimer) return on_timer();
  if (key == kListener) {
    accept_one();
    return {};
  }
  auto found = connections_.find(key);
  return found == connections_.end() ? ServerEvent{} : serve(*found, event.events, buffer);
}

// Reports are due at once: the timer makes fd() readable, so that the caller calls next() again.
void UnixServer::start_timer() {
  if (!reports_.empty()) {
    timer_.start({});
  } else if (!timer_.is_running()) {
    timer_.start(std::min(kTick, limits_.stuck_after));
  }
}

// Returns one report a call. The timer is started again while there is more to do.
ServerEvent UnixServer::on_timer() {
  timer_.expire();
  if (is_paused_) is_paused_ = !change_in_epoll(epoll_.get(), listener_.get(), kListener, EPOLLIN);
  drop_stuck();
  ServerEvent report{};
  if (!reports_.empty()) {
    report = reports_.front();
    reports_.pop_front();
  }
  bool has_output = std::any_of(connections_.begin(), connections_.end(),
                                [](const Entry& entry) { return !entry.second.output.empty(); });
  if (is_paused_ || has_output || !reports_.empty()) start_timer();
  return report;
}

void UnixServer::accept_one() {
  Accepted accepted = accept_from(listener_.get());
  const ScopedFd& socket = accepted.socket;
  if (socket) is_shortage_reported_ = false;  // this shortage is over
  // Closing a connection frees a descriptor: the next call accepts the connection that waits.
  if (accepted.is_exhausted && !close_undecided()) return pause_accepting();
  if (!socket || (connections_.size() >= kMaxConnections && !close_undecided())) return;
  setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
  if (!add_to_epoll(epoll_.get(), socket.get(), ++last_peer_)) return;
  connections_[last_peer_].socket = std::move(accepted.socket);
}

// The listener stays readable while no descriptor is free. It is not watched until the next tick,
// or next() would be called in a busy loop.
void UnixServer::pause_accepting() {
  is_paused_ = change_in_epoll(epoll_.get(), listener_.get(), kListener, 0);
  if (!is_shortage_reported_) reports_.push_back({ServerEvent::Kind::no_descriptors});
  is_shortage_reported_ = true;
  start_timer();
}

// Closes the oldest connection that has sent nothing. False when there is none. One whose first
// packet has arrived but is not read yet is kept.
bool UnixServer::close_undecided() {
  auto oldest = std::find_if(connections_.begin(), connections_.end(), [](const Entry& entry) {
    return entry.second.role == Role::undecided &&
           !wait_for(entry.second.socket.get(), POLLIN, Deadline::min());
  });
  if (oldest == connections_.end()) return false;
  connections_.erase(oldest);
  return true;
}

// EPOLLHUP and EPOLLERR are handled by the read, which returns what is left in the socket first: a
// client may send its last request and close.
ServerEvent UnixServer::serve(Entry& entry, uint32_t events, std::span<uint8_t> buffer) {
  auto& [peer, connection] = entry;
  if ((events & EPOLLOUT) != 0 && flush(entry) == Status::gone) return remove(peer);
  if ((events & ~static_cast<uint32_t>(EPOLLOUT)) == 0) return {};

  Received received = unix_receive(connection.socket.get(), buffer);
  if (received.status == Status::nothing) return {};
  if (received.status != Status::ok) return remove(peer);
  if (connection.role == Role::client) {
    return {ServerEvent::Kind::packet, connection.server.service, peer, received.size};
  }
  bool is_valid = decide_role(connection, buffer.first(received.size));
  return is_valid ? ServerEvent{} : remove(peer);
}

ServerEvent UnixServer::remove(Peer peer) {
  auto found = connections_.find(peer);
  bool is_client = found->second.role == Role::client;
  uint32_t service = found->second.server.service;
  connections_.erase(found);
  return is_client ? ServerEvent{ServerEvent::Kind::peer_gone, service, peer, 0} : ServerEvent{};
}

// EPOLLOUT is watched only while packets are queued: a socket with free room is always writable and
// would make fd() readable all the time.
Status UnixServer::send(Peer peer, std::span<const uint8_t> packet) {
  auto found = connections_.find(peer);
  if (found == connections_.end()) return Status::gone;
  auto& [socket, role, server, output] = found->second;
  bool was_empty = output.empty();
  Status status = output.put(packet, limits_.queue, sender(socket.get()));
  if (status == Status::nothing) return drop(peer);
  if (status == Status::gone) connections_.erase(found);  // no event: the caller knows
  if (status != Status::ok) return status;
  if (!was_empty || output.empty()) return status;
  change_in_epoll(epoll_.get(), socket.get(), peer, EPOLLIN | EPOLLOUT);
  start_timer();
  return status;
}

Status UnixServer::flush(Entry& entry) {
  auto& [peer, connection] = entry;
  int socket = connection.socket.get();
  Status status = connection.output.flush(sender(socket));
  if (connection.output.empty()) change_in_epoll(epoll_.get(), socket, peer, EPOLLIN);
  return status;
}

// Always returns `gone`. A later call of next() reports the dropped peer.
Status UnixServer::drop(Peer peer) {
  auto found = connections_.find(peer);
  const Connection& connection = found->second;
  reports_.push_back({ServerEvent::Kind::peer_dropped, connection.server.service, peer,
                      connection.output.bytes()});
  connections_.erase(found);
  start_timer();
  return Status::gone;
}

// Flushes first: the kernel raises EPOLLOUT only when most of the send buffer is free, so a client
// that reads slowly makes progress without an event.
void UnixServer::drop_stuck() {
  std::vector<Peer> stuck;
  for (Entry& entry : connections_) {
    OutputQueue& output = entry.second.output;
    if (!output.empty()) flush(entry);
    if (output.is_stuck(limits_.stuck_after)) stuck.push_back(entry.first);
  }
  for (Peer peer : stuck) drop(peer);  // not in the loop above, which drop() would invalidate
}

bool UnixServer::has_room(uint32_t service) const {
  Pace pace;
  for (const auto& [peer, connection] : connections_) {
    bool is_of_service = connection.role == Role::client && connection.server.service == service;
    if (is_of_service) pace.add(connection.output);
  }
  return pace.has_room();
}

std::vector<Peer> UnixServer::peers(uint32_t service) const {
  std::vector<Peer> found;
  for (const auto& [peer, connection] : connections_) {
    bool is_of_service = connection.role == Role::client && connection.server.service == service;
    if (is_of_service) found.push_back(peer);
  }
  return found;
}

std::unique_ptr<Server> unix_serve(const std::string& path, const ServerLimits& limits) {
  ScopedFd listener = unix_listen(path);
  if (!listener) return nullptr;
  auto server = std::make_unique<UnixServer>(path, std::move(listener), limits);
  return server->prepare() ? std::move(server) : nullptr;
}

}  // namespace qmi_transport
