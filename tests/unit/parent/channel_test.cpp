// SPDX-License-Identifier: Apache-2.0
// The example of a parent: nothing is left open when a call fails, and the daemon starts with clean
// descriptors and signals.
#include "platform/android/parent/channel.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

using testing::HasSubstr;

int g_pipes_left = 0;       // pipe2 fails after so many
bool g_fork_fails = false;  // with EAGAIN
constexpr int kTimeoutMs = 10'000;

}  // namespace

extern "C" {
int __real_pipe2(int* ends, int flags);
int __wrap_pipe2(int* ends, int flags) {
  if (g_pipes_left-- > 0) return __real_pipe2(ends, flags);
  errno = EMFILE;
  return -1;
}
pid_t __real_fork();
pid_t __wrap_fork() {
  if (!g_fork_fails) return __real_fork();
  errno = EAGAIN;
  return -1;
}
}

namespace {

long open_descriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// A program that writes what it was started with to its replies, then waits for its requests' end.
std::string script() {
  static const std::string path = testing::TempDir() + "/parent_test_program";
  FILE* file = fopen(path.c_str(), "w");
  fputs(
      "#!/bin/sh\n"
      "{ echo \"arguments $#, instance $4\"; echo fds $(ls /proc/$$/fd); echo mine $1 $2 $3\n"
      "  grep -E 'Sig(Blk|Ign)' /proc/self/status; } >&\"$2\"\n"
      "eval \"exec cat <&$1\"\n",
      file);
  fclose(file);
  chmod(path.c_str(), 0755);
  return path;
}

std::string read_all(int fd, const char* last) {
  std::string text;
  char piece[512];
  for (ssize_t size;
       text.find(last) == std::string::npos && (size = read(fd, piece, sizeof piece)) > 0;) {
    text.append(piece, static_cast<size_t>(size));
  }
  return text;
}

class Parent : public testing::Test {
 protected:
  Parent() { g_pipes_left = 3, g_fork_fails = false; }

  void expect_failure(int error) {
    long before = open_descriptors();
    QorextChannel channel;
    EXPECT_FALSE(start_qorext("/bin/true", 0, &channel));
    EXPECT_EQ(errno, error);
    EXPECT_EQ(channel.pid, -1);
    EXPECT_EQ(channel.requests, -1);
    EXPECT_EQ(open_descriptors(), before);
  }
};

TEST_F(Parent, LeavesNothingOpenWhenAPipeFails) {
  for (int pipes = 0; pipes < 3; ++pipes) {
    g_pipes_left = pipes;
    expect_failure(EMFILE);
  }
}

TEST_F(Parent, LeavesNothingOpenWhenForkFails) {
  g_fork_fails = true;
  expect_failure(EAGAIN);
}

TEST_F(Parent, StartsTheDaemonWithItsDescriptorsAndStandardSignals) {
  int leaked = fcntl(STDOUT_FILENO, F_DUPFD, 200);  // not close-on-exec
  signal(SIGUSR1, SIG_IGN);
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, nullptr);

  long before = open_descriptors();
  QorextChannel channel;
  ASSERT_TRUE(start_qorext(script().c_str(), 7, &channel));
  std::string seen = read_all(channel.replies, "SigIgn:\t");
  EXPECT_THAT(seen, HasSubstr("arguments 4, instance 7\n"));
  EXPECT_THAT(seen,
              testing::Not(testing::ContainsRegex("fds.* " + std::to_string(leaked) + "( |\n)")));
  EXPECT_THAT(seen, HasSubstr("SigBlk:\t0000000000000000\n"));

  EXPECT_EQ(stop_qorext(&channel, kTimeoutMs), 0);
  EXPECT_EQ(channel.pid, -1);
  EXPECT_EQ(open_descriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  close(leaked);
  signal(SIGUSR1, SIG_DFL);
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
}

TEST_F(Parent, ReportsAProgramThatCannotBeExecuted) {
  QorextChannel channel;
  ASSERT_TRUE(start_qorext("/nowhere/qorext_client", 0, &channel));
  int status = stop_qorext(&channel, kTimeoutMs);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 127);
}

TEST_F(Parent, KillsADaemonThatDoesNotExit) {
  QorextChannel channel;
  ASSERT_TRUE(start_qorext("/bin/sleep", 9, &channel));  // for the sum of its arguments
  int status = stop_qorext(&channel, 50);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(stop_qorext(&channel, 50), -1);
}

TEST(RestartDelay, DoublesUpToAMinuteAndBeginsAgain) {
  RestartDelay delay;
  EXPECT_EQ(delay.next_ms(5), 100);
  EXPECT_EQ(delay.next_ms(59'999), 200);
  EXPECT_EQ(delay.next_ms(5), 400);
  for (int i = 0; i < 20; ++i) delay.next_ms(5);
  EXPECT_EQ(delay.next_ms(5), 60'000);
  EXPECT_EQ(delay.next_ms(60'000), 100);
}

}  // namespace
