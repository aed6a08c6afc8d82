// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/interrupts.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace qorextctl {

Interrupts::Interrupts() {
  sigset_t signals;
  sigemptyset(&signals);
  for (int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
  fd_ = UniqueFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool Interrupts::take() const {
  bool harmless = true;
  signalfd_siginfo taken{};
  while (read(fd_.get(), &taken, sizeof taken) > 0) {
    harmless = harmless && taken.ssi_signo == SIGINT;
  }
  return harmless;
}

// A signal that came is taken, not delivered late.
Interrupts::~Interrupts() {
  take();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace qorextctl
