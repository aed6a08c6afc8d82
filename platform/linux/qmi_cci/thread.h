// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <signal.h>

#include <thread>
#include <utility>

namespace qmi_cci {

// A thread that takes no signals: those are for the process's own threads.
template <typename Work>
std::thread quiet_thread(Work work) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  struct Restore {
    const sigset_t& mask;
    ~Restore() { pthread_sigmask(SIG_SETMASK, &mask, nullptr); }
  } restore{before};
  return std::thread(std::move(work));
}

}  // namespace qmi_cci
