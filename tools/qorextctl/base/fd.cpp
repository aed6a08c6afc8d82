// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/fd.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qorextctl {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
  if (this == &other) return *this;
  reset();
  fd_ = std::exchange(other.fd_, -1);
  return *this;
}

void UniqueFd::reset() {
  if (valid()) close(fd_);
  fd_ = -1;
}

std::optional<Pipe> make_pipe() {
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{UniqueFd(fds[0]), UniqueFd(fds[1])};
}

// The kernel stamps what is sent over such a socket.
std::optional<Pipe> make_timed_pipe() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return std::nullopt;
  Pipe pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
  int on = 1;
  setsockopt(pipe.read.get(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on);
  return pipe;
}

}  // namespace qorextctl
