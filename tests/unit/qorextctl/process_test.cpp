// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/process.h"

#include <unistd.h>

#include <csignal>

#include "tests/unit/qorextctl/fake_setup.h"

namespace qorextctl {
namespace {

Launch shell(const std::string& script) {
  Launch launch;
  launch.arguments = {"/bin/sh", "-c", script};
  return launch;
}

std::vector<std::string> output_of(Launch launch) {
  auto pipe = make_pipe();
  launch.output = pipe->write.get();
  auto process = Process::start(launch);
  EXPECT_TRUE(process) << process.error().message;
  pipe->write.reset();
  LogCapture log;
  log.start(std::move(pipe->read));
  EXPECT_TRUE(process->wait(soon()));
  EXPECT_TRUE(log.wait_end(soon()));
  return log.lines();
}

TEST(Process, ReportsTheExitStatusOrTheSignal) {
  for (const auto& [script, expected] :
       {std::pair("exit 7", "exit status 7"), std::pair("kill -ABRT $$", "signal 6 (Aborted)")}) {
    auto process = Process::start(shell(script));
    ASSERT_TRUE(process);
    ASSERT_TRUE(process->wait(soon()));
    EXPECT_EQ(describe(*process->wait(soon())), expected);
  }
}

TEST(Process, TheEnvironmentIsInheritedAndExtended) {
  setenv("QOREXTCTL_TEST_A", "old", 1);
  setenv("QOREXTCTL_TEST_B", "kept", 1);
  Launch launch = shell("echo $QOREXTCTL_TEST_A $QOREXTCTL_TEST_B");
  launch.environment = {{"QOREXTCTL_TEST_A", "new"}};
  EXPECT_EQ(output_of(launch), std::vector<std::string>{"new kept"});
}

TEST(Process, InputIsEmptyAndTheLastLineNeedsNoEnd) {
  EXPECT_EQ(output_of(shell("cat; echo one; printf two >&2")),
            (std::vector<std::string>{"one", "two"}));
}

TEST(Process, IgnoredAndBlockedSignalsAreRestored) {
  signal(SIGPIPE, SIG_IGN);
  sigset_t signals;
  sigset_t before;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigprocmask(SIG_BLOCK, &signals, &before);
  auto lines = output_of(shell("grep -E '^Sig(Blk|Ign)' /proc/self/status"));
  sigprocmask(SIG_SETMASK, &before, nullptr);
  for (const std::string& line : lines) EXPECT_EQ(line.substr(8), "0000000000000000") << line;
  EXPECT_EQ(lines.size(), 2u);
}

TEST(Process, HasItsOwnProcessGroup) {
  auto process = Process::start(shell("exec sleep 60"));
  ASSERT_TRUE(process);
  EXPECT_EQ(getpgid(process->pid()), process->pid());
  EXPECT_NE(getpgid(process->pid()), getpgrp());
}

TEST(Process, IsKilledByTheDestructor) {
  pid_t pid = 0;
  {
    auto process = Process::start(shell("trap '' TERM HUP; while :; do sleep 0.01; done"));
    ASSERT_TRUE(process);
    pid = process->pid();
    EXPECT_EQ(kill(pid, 0), 0);
    EXPECT_FALSE(process->wait(Deadline::in_seconds(0)));
  }
  EXPECT_NE(kill(pid, 0), 0);
}

TEST(Process, AMissingExecutableIsAnError) {
  auto process =
      Process::start(Launch{.arguments = {"/nowhere/x"}, .environment = {}, .descriptors = {}});
  ASSERT_FALSE(process);
  EXPECT_EQ(process.error().message, "cannot start /nowhere/x: No such file or directory");
}

TEST(Process, FindsAnExecutableInTheSameFolder) {
  EXPECT_NE(sibling("qorextctl_test"), "");
  EXPECT_EQ(sibling("no_such_program"), "");
}

TEST(LogCapture, AWaitForALineEndsWithTheLog) {
  auto pipe = make_pipe();
  LogCapture log;
  log.start(std::move(pipe->read));
  ASSERT_EQ(write(pipe->write.get(), "one\ntwo\n", 8), 8);
  EXPECT_TRUE(log.wait_for("two", soon()));
  EXPECT_FALSE(log.wait_for("three", Deadline::in_seconds(0.02)));
  EXPECT_FALSE(log.wait_end(Deadline::in_seconds(0)));
  pipe->write.reset();
  EXPECT_FALSE(log.wait_for("three", soon()));
  EXPECT_TRUE(log.wait_end(soon()));
}

TEST(LogCapture, ReportsWhenALineWasWrittenNotWhenItIsRead) {
  auto log = make_timed_pipe();
  ASSERT_TRUE(log);
  auto now = [] { return std::chrono::nanoseconds(Deadline::Clock::now().time_since_epoch()); };
  auto before = now();
  ASSERT_EQ(write(log->write.get(), "line\n", 5), 5);
  auto after = now();
  log->write.reset();
  while (now() < after + std::chrono::milliseconds(20)) {
  }
  std::vector<std::pair<std::string, int64_t>> seen;
  LogCapture capture;
  capture.start(std::move(log->read),
                [&seen](const std::string& line, int64_t time) { seen.emplace_back(line, time); });
  ASSERT_TRUE(capture.wait_end(soon()));
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].first, "line");
  constexpr int64_t kMaxClockError = 5'000'000;
  EXPECT_GE(seen[0].second, before.count() - kMaxClockError);
  EXPECT_LE(seen[0].second, after.count() + kMaxClockError);
}

TEST(LogCapture, KeepsOnlyTheLastLines) {
  auto pipe = make_pipe();
  LogCapture log({}, 2);
  log.start(std::move(pipe->read));
  ASSERT_EQ(write(pipe->write.get(), "one\ntwo\nthree\n", 14), 14);
  pipe->write.reset();
  EXPECT_TRUE(log.wait_end(soon()));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"two", "three"}));
}

}  // namespace
}  // namespace qorextctl
