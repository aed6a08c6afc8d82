// SPDX-License-Identifier: Apache-2.0
#include "platform/android/parent/channel.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr int kFirstDelayMs = 100;
constexpr int kMaxDelayMs = 60'000;
constexpr long kStableMs = 60'000;
constexpr int kPollMs = 10;
constexpr int kCannotExecute = 127;
constexpr int kNumberSize = 12;  // of a decimal number and its NUL

struct Pipe {
  int read_end = -1;
  int write_end = -1;
  bool open() {
    int ends[2];
    // Close-on-exec: another child that the parent starts must not keep a pipe open.
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    read_end = ends[0];
    write_end = ends[1];
    return true;
  }
};

void close_end(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

// What the daemon is started with. Made before fork, since the child of a process with threads may
// only call functions that are safe in a signal handler.
struct Launch {
  const char* program;
  int fds[3];
  char arguments[4][kNumberSize];
};

// Closes all descriptors but the standard ones and the daemon's three.
void close_others(const int (&kept)[3]) {
  auto is_kept = [&kept](int fd) { return fd == kept[0] || fd == kept[1] || fd == kept[2]; };
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  auto end = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 1 << 20));
  for (int fd = STDERR_FILENO + 1; fd < end; ++fd) {
    if (!is_kept(fd)) close(fd);
  }
}

// The parent's mask and what it ignores would be the daemon's, too; handlers end with execve.
void reset_signals() {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) sigaction(number, &standard, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void run_child(Launch& launch) {
  reset_signals();
  close_others(launch.fds);
  for (int fd : launch.fds) fcntl(fd, F_SETFD, 0);
  // Capabilities that init gave the parent for its children, too, are not for the daemon.
  prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
  auto& arguments = launch.arguments;
  execl(launch.program, "qorext_client", arguments[0], arguments[1], arguments[2], arguments[3],
        static_cast<char*>(nullptr));
  _exit(kCannotExecute);
}

long now_ms() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace

bool start_qorext(const char* program, unsigned instance, QorextChannel* channel) {
  Pipe requests;
  Pipe replies;
  Pipe unsolicited;
  bool is_ready = requests.open() && replies.open() && unsolicited.open();
  pid_t pid = -1;
  if (is_ready) {
    Launch launch = {program, {requests.read_end, replies.write_end, unsolicited.write_end}, {}};
    for (int i = 0; i < 3; ++i) snprintf(launch.arguments[i], kNumberSize, "%d", launch.fds[i]);
    snprintf(launch.arguments[3], kNumberSize, "%u", instance);
    pid = fork();
    if (pid == 0) run_child(launch);
  }

  int error = errno;
  close_end(requests.read_end);
  close_end(replies.write_end);
  close_end(unsolicited.write_end);
  if (pid > 0) {
    *channel = {pid, requests.write_end, replies.read_end, unsolicited.read_end};
    return true;
  }
  close_end(requests.write_end);
  close_end(replies.read_end);
  close_end(unsolicited.read_end);
  errno = error;
  return false;
}

int stop_qorext(QorextChannel* channel, int timeout_ms) {
  close_end(channel->requests);
  close_end(channel->replies);
  close_end(channel->unsolicited);
  if (channel->pid < 0) return -1;

  int status = 0;
  long deadline = now_ms() + timeout_ms;
  while (waitpid(channel->pid, &status, WNOHANG) == 0) {
    if (now_ms() >= deadline) kill(channel->pid, SIGKILL);
    timespec pause = {0, kPollMs * 1'000'000L};
    nanosleep(&pause, nullptr);
  }
  channel->pid = -1;
  return status;
}

int RestartDelay::next_ms(long ran_ms) {
  bool is_first = delay_ms_ == 0 || ran_ms >= kStableMs;
  delay_ms_ = is_first ? kFirstDelayMs : std::min(delay_ms_ * 2, kMaxDelayMs);
  return delay_ms_;
}
