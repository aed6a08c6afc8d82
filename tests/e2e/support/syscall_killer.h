// SPDX-License-Identifier: Apache-2.0
// Ends the daemon as a crash in the middle of its work does.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <thread>
#include <vector>

namespace e2e {

// Follows the callback threads of a daemon, with ptrace(). The first of them that opens a file is
// let come to its system call number `call`, the open being number 1, and not into it: then the
// whole daemon is killed.
class SyscallKiller {
 public:
  // Returns when it follows them.
  SyscallKiller(pid_t daemon, unsigned call);
  ~SyscallKiller() { end(); }

  // Follows them no longer. Whether the daemon has been killed.
  bool end();

 private:
  void run();
  void follow(pid_t thread);
  void look_at(pid_t thread);
  bool is_the_call(pid_t thread);

  pid_t daemon_;
  unsigned calls_left_;
  pid_t worker_ = 0;  // the thread that opened a file
  std::atomic<bool> is_following_{false};
  std::atomic<bool> is_over_{false};
  bool has_killed_ = false;
  std::thread tracer_;
};

}  // namespace e2e
