// SPDX-License-Identifier: Apache-2.0
// SIGINT, SIGTERM and SIGHUP as a readable descriptor, so that waits end and what was started and
// made is tidied up.
#pragma once

#include <csignal>

#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  int fd() const { return fd_.get(); }

  // Takes what has come. Whether it is nothing more than Ctrl-C at the terminal.
  bool take() const;

 private:
  sigset_t before_{};
  UniqueFd fd_;
};

}  // namespace qorextctl
