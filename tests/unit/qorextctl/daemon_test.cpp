// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/daemon.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/unit/qorextctl/fake_setup.h"
#include "tests/unit/qorextctl/frame_samples.h"

namespace qorextctl {
namespace {

using DaemonStart = WithFakeDaemon;

const Bytes kRequest = build({.id = 0x02000007});

TEST_F(DaemonStart, PassesThreePipesAndTheInstanceAndNothingElse) {
  UniqueFd leak(open("/dev/null", O_RDONLY));  // inheritable
  auto daemon = start("start");
  ASSERT_TRUE(daemon->send(kRequest));
  ASSERT_TRUE(daemon->receive_reply(ReplyForm::cdma, soon()));
  ASSERT_TRUE(daemon->log().wait_for("request", soon()));

  auto lines = daemon->log().lines();
  int fds[3];
  int instance = -1;
  ASSERT_EQ(sscanf(lines[0].c_str(), "arguments %d %d %d %d", &fds[0], &fds[1], &fds[2], &instance),
            4);
  std::sort(std::begin(fds), std::end(fds));
  EXPECT_EQ(lines[1], fmt::format("open {}", fmt::join(fds, " ")));
  EXPECT_EQ(instance, 2);
  lines.erase(lines.begin(), lines.begin() + 2);
  EXPECT_THAT(lines, testing::ElementsAre("modem unix:/m", "root /root/of/phone", "request 18"));
}

TEST_F(DaemonStart, ATooLongLogLineIsDropped) {
  auto daemon = start("long-log");
  ASSERT_TRUE(daemon->send(kRequest));
  ASSERT_TRUE(daemon->receive_reply(ReplyForm::cdma, soon()));
  daemon->close_requests();
  ASSERT_TRUE(daemon->log().wait_end(soon()));
  const char* dropped = "(a line of more than 65536 bytes)";
  EXPECT_THAT(daemon->log().lines(), testing::ElementsAre(testing::_, dropped, "short", dropped));
}

TEST_F(DaemonStart, UnprocessedBytesAreLimited) {
  auto daemon = start("flood-corrupt");
  ASSERT_TRUE(daemon->send(kRequest));
  FramePipe& pipe = daemon->unsolicited();
  Deadline deadline = soon();
  while (pipe.poll_fd() >= 0 && !deadline.passed()) pipe.read_available();
  EXPECT_EQ(pipe.poll_fd(), -1);
  EXPECT_FALSE(pipe.ended());
  EXPECT_LT(pipe.pending().size(), 17U << 20);
  pipe.take_all();
  EXPECT_GE(pipe.poll_fd(), 0);
  daemon->process().signal(SIGKILL);
}

TEST_F(DaemonStart, TheDaemonEndsWhenItsRequestPipeIsClosed) {
  auto daemon = start("answer");
  EXPECT_FALSE(daemon->wait_exit(Deadline::in_seconds(0.02)));
  daemon->close_requests();
  EXPECT_EQ(describe(daemon->wait_exit(soon()).value()), "exit status 0");
}

TEST_F(DaemonStart, ADaemonThatHasEndedAcceptsNoRequests) {
  auto daemon = start("end");
  ASSERT_TRUE(daemon->send(kRequest));
  EXPECT_FALSE(daemon->receive_reply(ReplyForm::cdma, soon()));
  EXPECT_TRUE(daemon->replies().ended());
  EXPECT_EQ(daemon->wait_exit(soon())->code, 3);
  EXPECT_FALSE(daemon->send(kRequest));
  EXPECT_TRUE(daemon->log().wait_end(soon()));
  EXPECT_EQ(daemon->log().lines().back(), "leaving");
}

TEST_F(DaemonStart, UnsolicitedFramesAreJoinedFromPieces) {
  auto daemon = start("notify");
  ASSERT_TRUE(daemon->send(kRequest));
  EXPECT_EQ(daemon->receive_unsolicited(soon()), cdma_unsolicited(0x020001B0, {7, 0, 0, 0}));
  EXPECT_EQ(daemon->receive_unsolicited(soon()), generic_unsolicited(0x04001500, {9}));
  EXPECT_FALSE(daemon->receive_unsolicited(Deadline::in_seconds(0.02)));
  EXPECT_FALSE(daemon->unsolicited().ended());
}

TEST_F(DaemonStart, TwoRepliesInOneWriteAreTwoFrames) {
  auto daemon = start("twice");
  ASSERT_TRUE(daemon->send(kRequest));
  EXPECT_EQ(daemon->receive_reply(ReplyForm::cdma, soon()), cdma_frame(0x02000007, 0, {}));
  EXPECT_EQ(daemon->receive_reply(ReplyForm::cdma, soon()), cdma_frame(0x02000007, 6, {}));
}

TEST_F(DaemonStart, LogLinesArePassedToTheListener) {
  set_mode("answer");
  std::vector<std::string> seen;
  DaemonOptions launch = options();
  launch.on_log = [&seen](const std::string& line) { seen.push_back(line); };
  {
    auto daemon = Daemon::start(launch);
    ASSERT_TRUE(daemon);
  }
  EXPECT_THAT(seen, testing::ElementsAre(testing::StartsWith("arguments")));
}

TEST_F(DaemonStart, AMissingExecutableIsATransportError) {
  DaemonOptions launch = options();
  launch.executable = "/nowhere/daemon";
  auto daemon = Daemon::start(launch);
  ASSERT_FALSE(daemon);
  EXPECT_EQ(daemon.error().outcome, Outcome::transport);
  EXPECT_EQ(daemon.error().message, "cannot start /nowhere/daemon: No such file or directory");
}

}  // namespace
}  // namespace qorextctl
