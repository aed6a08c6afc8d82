// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/unix_socket.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_transport {
namespace {

constexpr int kBacklog = 64;

bool is_socket(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

// Removes a socket file that no process listens on any more: it refuses connections.
bool remove_stale(const std::string& path) {
  bool is_stale = !unix_connect(path) && errno == ECONNREFUSED && is_socket(path);
  if (is_stale) return unlink(path.c_str()) == 0;
  errno = EADDRINUSE;
  return false;
}

}  // namespace

std::optional<sockaddr_un> unix_address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof(address.sun_path)) {
    errno = path.empty() ? ENOENT : ENAMETOOLONG;
    return std::nullopt;
  }
  memcpy(address.sun_path, path.data(), path.size());
  return address;
}

ScopedFd unix_socket() {
  return ScopedFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

ScopedFd unix_connect(const std::string& path) {
  auto address = unix_address(path);
  if (!address) return {};
  ScopedFd fd = unix_socket();
  if (!fd) return {};
  auto* target = reinterpret_cast<const sockaddr*>(&*address);
  if (connect(fd.get(), target, sizeof(*address)) != 0) return {};
  return fd;
}

Status unix_send(int socket, std::span<const uint8_t> packet, Deadline deadline) {
  for (;;) {
    ssize_t sent = send(socket, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) return Status::ok;
    if (errno == EINTR) continue;
    if (errno != EAGAIN) return status_of(errno);
    if (!wait_for(socket, POLLOUT, deadline)) return Status::nothing;
  }
}

Received unix_receive(int socket, std::span<uint8_t> buffer, int flags) {
  iovec part{buffer.data(), static_cast<size_t>(buffer.size())};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;

  ssize_t size = 0;
  do {
    size = recvmsg(socket, &message, flags);
  } while (size < 0 && errno == EINTR);
  if (size < 0) return {status_of(errno)};
  if (size == 0) return {Status::gone};  // or an empty packet, which is a protocol error
  bool is_truncated = (message.msg_flags & MSG_TRUNC) != 0;
  return {is_truncated ? Status::too_long : Status::ok, static_cast<size_t>(size)};
}

SocketFile::~SocketFile() {
  struct stat now {};
  if (lstat(path_.c_str(), &now) != 0) return;
  if (now.st_dev == identity_.st_dev && now.st_ino == identity_.st_ino) unlink(path_.c_str());
}

ScopedFd unix_listen(const std::string& path) {
  auto address = unix_address(path);
  if (!address) return {};
  ScopedFd listener = unix_socket();
  if (!listener) return {};

  auto* name = reinterpret_cast<const sockaddr*>(&*address);
  bool bound = bind(listener.get(), name, sizeof(*address)) == 0;
  if (!bound && errno == EADDRINUSE && remove_stale(path)) {
    bound = bind(listener.get(), name, sizeof(*address)) == 0;
  }
  if (!bound || listen(listener.get(), kBacklog) != 0) return {};
  return listener;
}

}  // namespace qmi_transport
