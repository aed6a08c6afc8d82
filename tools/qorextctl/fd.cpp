#include "fd.h"

#include <fcntl.h>
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

}  // namespace qorextctl
