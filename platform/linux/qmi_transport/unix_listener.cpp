// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/unix_listener.h"

#include <errno.h>
#include <unistd.h>

#include "platform/linux/qmi_transport/unix_socket.h"

namespace qmi_transport {
namespace {

constexpr int kBacklog = 64;

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

}  // namespace

SocketFile::~SocketFile() {
  struct stat now {};
  if (lstat(path_.c_str(), &now) != 0) return;
  if (now.st_dev == identity_.st_dev && now.st_ino == identity_.st_ino) unlink(path_.c_str());
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

}  // namespace qmi_transport
