// SPDX-License-Identifier: Apache-2.0
// Kills the daemon in the middle of its work.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <thread>
#include <vector>

namespace e2e {

// Traces the callback threads of a daemon with ptrace(). The first thread that opens a file is
// counted: the whole daemon is killed at the entry of that thread's system call number `call`,
// where the open is number 1. The call itself is not executed.
class SyscallKiller {
 public:
  // Returns when the threads are traced.
  SyscallKiller(pid_t daemon, unsigned call);
  ~SyscallKiller() { end(); }

  // Stops tracing. Returns whether the daemon has been killed.
  bool end();

 private:
  void run();
  void trace(pid_t thread);
  void kill_at_call(pid_t thread);
  bool is_the_call(pid_t thread);

  pid_t daemon_;
  unsigned calls_left_;
  pid_t worker_ = 0;  // the thread that opened a file
  std::atomic<bool> is_tracing_{false};
  std::atomic<bool> is_over_{false};
  bool has_killed_ = false;
  std::thread tracer_;
};

}  // namespace e2e
