// SPDX-License-Identifier: Apache-2.0
// The library's threads: how they are started, what they wait on, and how their waits are ended.
#pragma once

#include <signal.h>

#include <thread>
#include <utility>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_cci {

// Starts a thread with all signals blocked: the process's signals are for the threads of the
// caller. Throws std::system_error when no thread can be started.
template <typename Work>
std::thread start_thread(Work work) {
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

enum class Ready { readable, stopped, timed_out };

// Ends the waits of other threads permanently. Thread-safe.
class StopEvent {
 public:
  // Throws std::system_error when there is no descriptor.
  StopEvent();
  void set();
  // Readable after set().
  int fd() const { return event_.get(); }
  // Waits until the event is set, `fd` is readable (ignored when negative), or the deadline.
  Ready wait(int fd, qmi_transport::Deadline deadline) const;

 private:
  qmi_transport::ScopedFd event_;
};

// Where a thread waits for packets that another thread may read. While the gate is shut a packet
// does not wake it.
class ReadGate {
 public:
  // The gate is open at first. `stop` ends the wait when it is readable. Throws std::system_error
  // when there is no descriptor.
  ReadGate(int channel, int stop);

  // One thread at a time may call these, also while another waits.
  void open() { set_open(true); }
  void shut() { set_open(false); }

  // Waits until the channel is readable while the gate is open, its peer has gone away (also while
  // the gate is shut), or `stop` is readable.
  void wait() const;

 private:
  void set_open(bool is_open);

  int channel_;
  qmi_transport::ScopedFd epoll_;
  bool is_open_ = true;
};

}  // namespace qmi_cci
