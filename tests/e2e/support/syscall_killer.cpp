// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/syscall_killer.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace e2e {

namespace {

constexpr auto kPollInterval = std::chrono::microseconds(100);
constexpr int kSystemCallStop = SIGTRAP | 0x80;  // with PTRACE_O_TRACESYSGOOD

// A thread may have ended meanwhile; that is not an error.
void request(__ptrace_request what, pid_t thread, void* data = nullptr) {
  if (ptrace(what, thread, nullptr, data) == 0 || errno == ESRCH) return;
  std::cerr << "ptrace request " << what << ": " << std::generic_category().message(errno) << "\n";
  std::abort();
}

bool begins_call(pid_t thread, __ptrace_syscall_info& info) {
  auto size = reinterpret_cast<void*>(sizeof info);
  return ptrace(PTRACE_GET_SYSCALL_INFO, thread, size, &info) > 0 &&
         info.op == PTRACE_SYSCALL_INFO_ENTRY;
}

}  // namespace

SyscallKiller::SyscallKiller(pid_t daemon, unsigned call)
    : daemon_(daemon), calls_left_(call), tracer_([this] { run(); }) {
  is_tracing_.wait(false);
}

bool SyscallKiller::end() {
  is_over_ = true;
  if (tracer_.joinable()) tracer_.join();
  return has_killed_;
}

// The kernel accepts ptrace requests only from the tracing thread, and detaches when it ends.
void SyscallKiller::run() {
  std::string tasks = "/proc/" + std::to_string(daemon_) + "/task";
  for (const auto& entry : std::filesystem::directory_iterator(tasks)) {
    pid_t thread = std::stoi(entry.path().filename());
    if (thread != daemon_) trace(thread);
  }
  is_tracing_ = true;
  is_tracing_.notify_all();
  pid_t thread = 0;
  while (thread >= 0 && !is_over_) {
    int status = 0;
    thread = waitpid(-1, &status, __WALL | __WNOTHREAD | WNOHANG);
    if (thread == 0) std::this_thread::sleep_for(kPollInterval);
    if (thread > 0 && WIFSTOPPED(status)) {
      if (WSTOPSIG(status) == kSystemCallStop) kill_at_call(thread);
      request(PTRACE_SYSCALL, thread);
    }
  }
}

void SyscallKiller::trace(pid_t thread) {
  request(PTRACE_SEIZE, thread, reinterpret_cast<void*>(PTRACE_O_TRACESYSGOOD));
  request(PTRACE_INTERRUPT, thread);
  waitpid(thread, nullptr, __WALL);
  request(PTRACE_SYSCALL, thread);
}

void SyscallKiller::kill_at_call(pid_t thread) {
  if (!is_the_call(thread)) return;
  kill(daemon_, SIGKILL);
  has_killed_ = true;
}

bool SyscallKiller::is_the_call(pid_t thread) {
  __ptrace_syscall_info info;
  if (!begins_call(thread, info)) return false;
  if (worker_ == 0 && info.entry.nr == SYS_openat) worker_ = thread;
  return worker_ == thread && calls_left_ > 0 && --calls_left_ == 0;
}

}  // namespace e2e
