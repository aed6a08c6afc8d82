// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/fd.h"

#include <fcntl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qorextctl {

namespace {

constexpr mode_t kOwnerOnly = 0600;

// Pipes and devices keep their mode.
bool make_private(int fd) {
  struct stat status;
  if (fstat(fd, &status) != 0) return false;
  return !S_ISREG(status.st_mode) || fchmod(fd, kOwnerOnly) == 0;
}

}  // namespace

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

// Pipes have no timestamps: the kernel adds them to the packets of a socket.
std::optional<Pipe> make_timed_pipe() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return std::nullopt;
  Pipe pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
  int on = 1;
  setsockopt(pipe.read.get(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on);
  return pipe;
}

UniqueFd open_private(const std::string& path, int flags) {
  UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, kOwnerOnly));
  return file.valid() && make_private(file.get()) ? std::move(file) : UniqueFd();
}

Interrupts::Interrupts() {
  sigset_t signals;
  sigemptyset(&signals);
  for (int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
  fd_ = UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

Interrupts::~Interrupts() {
  take();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool Interrupts::take() const {
  bool only_sigint = true;
  signalfd_siginfo taken{};
  while (read(fd_.get(), &taken, sizeof taken) > 0) {
    only_sigint = only_sigint && taken.ssi_signo == SIGINT;
  }
  return only_sigint;
}

}  // namespace qorextctl
