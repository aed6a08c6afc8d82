// SPDX-License-Identifier: Apache-2.0
#include "modem/control/control_server.h"

#include <errno.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <system_error>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/wait.h"

namespace modem {
namespace {

using qmi_transport::ScopedFd;

constexpr int kBacklog = 16;
// At this number a new connection replaces the oldest one that has sent nothing; if there is none,
// the new one is closed.
constexpr size_t kMaxConnections = 64;
constexpr size_t kReadSize = 65536;
// A line may hold a whole state, an answer the longest request log.
constexpr size_t kMaxLine = size_t{4} << 20;
constexpr size_t kMaxOutput = size_t{256} << 20;

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    fail(path);
  }
  memcpy(address.sun_path, path.c_str(), path.size());
  return address;
}

ScopedFd new_socket(const std::string& path) {
  ScopedFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!fd) fail(path);
  return fd;
}

// A socket file that refuses connections belonged to a process that has ended.
void remove_stale(const std::string& path) {
  sockaddr_un address = address_of(path);
  ScopedFd probe = new_socket(path);
  int result = connect(probe.get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  if (result != 0 && errno == ECONNREFUSED) unlink(path.c_str());
}

ScopedFd listen_on(const std::string& path) {
  remove_stale(path);
  sockaddr_un address = address_of(path);
  ScopedFd listener = new_socket(path);
  if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) fail(path);
  if (listen(listener.get(), kBacklog) != 0) fail(path);
  return listener;
}

bool set_events(int epoll, int operation, int fd, uint32_t events) {
  epoll_event event{};
  event.events = events;
  event.data.fd = fd;
  return epoll_ctl(epoll, operation, fd, &event) == 0;
}

bool is_readable(int fd) {
  return qmi_transport::wait_for(fd, POLLIN, qmi_transport::Deadline::min());
}

}  // namespace

ControlServer::ControlServer(const std::string& path, Answer answer)
    : path_(path),
      answer_(std::move(answer)),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      listener_(listen_on(path)) {
  bool is_ready = set_events(epoll_.get(), EPOLL_CTL_ADD, listener_.get(), EPOLLIN) &&
                  set_events(epoll_.get(), EPOLL_CTL_ADD, pause_.fd(), EPOLLIN);
  if (!is_ready) fail(path);
}

ControlServer::~ControlServer() { unlink(path_.c_str()); }

void ControlServer::serve() {
  epoll_event event{};
  if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) return;
  int fd = event.data.fd;
  if (fd == listener_.get()) return accept_client();
  if (fd == pause_.fd()) return resume_accepting();

  auto found = connections_.find(fd);
  if (found != connections_.end() && !handle(found->second, event.events)) {
    connections_.erase(found);
  }
}

void ControlServer::accept_client() {
  qmi_transport::Accepted accepted = qmi_transport::accept_from(listener_.get());
  // A closed connection frees a descriptor: the next call accepts the waiting connection.
  if (accepted.is_exhausted && !close_silent()) return pause_accepting();
  if (!accepted.socket) return;
  is_short_ = false;
  if (connections_.size() >= kMaxConnections && !close_silent()) return;
  int fd = accepted.socket.get();
  if (!set_events(epoll_.get(), EPOLL_CTL_ADD, fd, EPOLLIN)) return;
  connections_[fd] = {.socket = std::move(accepted.socket), .number = ++last_number_};
}

void ControlServer::pause_accepting() {
  set_events(epoll_.get(), EPOLL_CTL_MOD, listener_.get(), 0);
  pause_.start(qmi_transport::kAcceptPause);
  if (is_short_) return;
  is_short_ = true;
  fprintf(stderr, "qorext_modem: %s: new connections have to wait: no descriptors are left\n",
          path_.c_str());
}

void ControlServer::resume_accepting() {
  pause_.expire();
  set_events(epoll_.get(), EPOLL_CTL_MOD, listener_.get(), EPOLLIN);
}

// Closes the oldest connection that has sent nothing. Returns false if there is none.
bool ControlServer::close_silent() {
  auto oldest = connections_.end();
  for (auto each = connections_.begin(); each != connections_.end(); ++each) {
    if (!each->second.is_silent || is_readable(each->first)) continue;
    bool is_older = oldest == connections_.end() || each->second.number < oldest->second.number;
    if (is_older) oldest = each;
  }
  if (oldest == connections_.end()) return false;
  connections_.erase(oldest);
  return true;
}

bool ControlServer::handle(Connection& connection, uint32_t events) {
  if ((events & EPOLLOUT) != 0) return write_output(connection);
  return read_lines(connection) && write_output(connection);
}

bool ControlServer::read_lines(Connection& connection) {
  char buffer[kReadSize];
  ssize_t size = recv(connection.socket.get(), buffer, sizeof buffer, 0);
  if (size < 0) return errno == EAGAIN || errno == EINTR;
  if (size == 0) return false;

  connection.is_silent = false;
  std::string& input = connection.input;
  input.append(buffer, static_cast<size_t>(size));
  size_t start = 0;
  for (size_t end = input.find('\n'); end != std::string::npos; end = input.find('\n', start)) {
    Answered answered = answer_(input.substr(start, end - start));
    connection.output += answered.line + '\n';
    connection.watches = connection.watches || answered.watches;
    start = end + 1;
  }
  input.erase(0, start);
  return input.size() <= kMaxLine && connection.output.size() <= kMaxOutput;
}

// Does not write: the caller may be serving one of the connections. The loop writes the lines.
void ControlServer::report(const std::string& line) {
  for (auto& [fd, connection] : connections_) {
    if (!connection.watches) continue;
    connection.output += line + '\n';
    if (connection.output.size() > kMaxOutput) {
      connection.watches = false;
      shutdown(fd, SHUT_RDWR);
    }
    watch(connection, true);
  }
}

bool ControlServer::is_watched() const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [](const auto& entry) { return entry.second.watches; });
}

bool ControlServer::write_output(Connection& connection) {
  std::string& output = connection.output;
  ssize_t size = send(connection.socket.get(), output.data(), output.size(), MSG_NOSIGNAL);
  if (size < 0 && errno != EAGAIN && errno != EINTR) return false;
  if (size > 0) output.erase(0, static_cast<size_t>(size));
  return watch(connection, !output.empty());
}

// Stops reading from a client that does not read its answers.
bool ControlServer::watch(const Connection& connection, bool for_writing) {
  return set_events(epoll_.get(), EPOLL_CTL_MOD, connection.socket.get(),
                    for_writing ? EPOLLOUT : EPOLLIN);
}

}  // namespace modem
