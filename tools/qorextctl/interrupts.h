// SIGINT, SIGTERM and SIGHUP as a readable descriptor, so that waits end and what was started and
// made is tidied up.
#pragma once

#include <csignal>

#include "fd.h"

namespace qorextctl {

class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  int fd() const { return fd_.get(); }

 private:
  sigset_t before_{};
  UniqueFd fd_;
};

}  // namespace qorextctl
