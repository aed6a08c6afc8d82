// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/exchange.h"

#include "tests/unit/qorextctl/fake_setup.h"
#include "tools/qorextctl/frames/arguments.h"

namespace qorextctl {
namespace {

class ExchangeWith : public WithFakeDaemon {
 protected:
  Outcome run(const char* mode, const std::vector<std::string>& words, double timeout = 10) {
    daemon_ = start(mode);
    exchange_.emplace(*daemon_, printer_, timeout);
    return send(words);
  }

  Outcome send(const std::vector<std::string>& words) {
    auto command = parse_command(words, false);
    EXPECT_TRUE(command) << command.error().message;
    return exchange_->run(command->bytes, command->request);
  }

  std::unique_ptr<Daemon> daemon_;
  std::optional<Exchange> exchange_;
};

TEST_F(ExchangeWith, ASuccessIsASuccess) {
  EXPECT_EQ(run("answer", {"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(out_.str(), "set-ddtm (0x020000B8): success\n");
  EXPECT_EQ(exchange_->finish(true), Outcome::success);
  EXPECT_NE(out_.str().find("daemon ended with exit status 0\n"), std::string::npos);
  EXPECT_EQ(err_.str(), "");
}

TEST_F(ExchangeWith, AFailureStatusIsRefused) {
  EXPECT_EQ(run("refuse", {"set-ddtm", "ddtm=1"}), Outcome::refused);
  EXPECT_EQ(out_.str(), "set-ddtm (0x020000B8): failure\n");
}

TEST_F(ExchangeWith, AReplyWithoutItsDataIsRefused) {
  EXPECT_EQ(run("answer", {"get-ddtm"}), Outcome::refused);
  EXPECT_NE(out_.str().find("problem: 0 bytes of data, 4 expected"), std::string::npos);
}

TEST_F(ExchangeWith, TheSecondReplyIsExpectedAndShown) {
  EXPECT_EQ(run("twice", {"set-profile", "profile=1"}), Outcome::success);
  EXPECT_EQ(out_.str(),
            "set-profile (0x020000B5): success\n"
            "set-profile (0x020000B5), second reply: obsolete or not supported\n");
}

TEST_F(ExchangeWith, AnUnservedRequestHasNoSecondReply) {
  EXPECT_EQ(run("unknown", {"set-profile", "profile=1"}), Outcome::refused);
  EXPECT_EQ(err_.str(), "");
}

TEST_F(ExchangeWith, AMissingSecondReplyIsATransportFailure) {
  EXPECT_EQ(run("answer-and-end", {"set-profile", "profile=1"}), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: no second reply to set-profile: the daemon ended with exit status 3\n");
}

TEST_F(ExchangeWith, RepliesThatNobodyAskedForAreToldBeforeTheNextRequest) {
  EXPECT_EQ(run("twice", {"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(err_.str(),
            "qorextctl: bytes that no request asked for: ****************************************"
            "\n");
}

TEST_F(ExchangeWith, BytesThatNobodyAskedForAreShownWherePersonalDataIsWanted) {
  printer_.show_personal(true);
  EXPECT_EQ(run("twice", {"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(err_.str(),
            "qorextctl: bytes that no request asked for: B8000002000000000600000000000000000000"
            "00\n");
}

TEST_F(ExchangeWith, SilenceEndsWithTheTimeout) {
  EXPECT_EQ(run("silent", {"get-ddtm"}, 0.05), Outcome::transport);
  EXPECT_EQ(
      err_.str(),
      "qorextctl: no reply to get-ddtm within 0.05 s; --log shows why, a longer --timeout waits "
      "longer\n");
}

TEST_F(ExchangeWith, ARequestIsNotPutBehindOneThatIsNotRead) {
  EXPECT_EQ(run("deaf", {"get-ddtm"}, 0.05), Outcome::transport);
  EXPECT_EQ(send({"get-ddtm"}), Outcome::transport);
  err_.str("");
  EXPECT_EQ(send({"get-nam"}), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: get-nam is not sent: the daemon has not read the request before it within "
            "0.05 s\n");
  daemon_->process().signal(SIGKILL);
}

TEST_F(ExchangeWith, APartOfAReplyIsShown) {
  printer_.show_personal(true);
  EXPECT_EQ(run("part", {"get-ddtm"}), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: no reply to get-ddtm: the daemon ended with exit status 3, only a part "
            "came: B700000200\n");
}

TEST_F(ExchangeWith, TheEndOfTheDaemonIsTold) {
  EXPECT_EQ(run("end", {"get-ddtm"}), Outcome::transport);
  EXPECT_EQ(err_.str(), "qorextctl: no reply to get-ddtm: the daemon ended with exit status 3\n");
  EXPECT_TRUE(exchange_->over());
  EXPECT_EQ(send({"get-ddtm"}), Outcome::transport);
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
}

TEST_F(ExchangeWith, UnsolicitedFramesAreShownAsTheyComeAndCanBeWaitedFor) {
  EXPECT_EQ(run("notify", {"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(exchange_->wait_unsolicited(2, 10), Outcome::success);
  EXPECT_NE(out_.str().find("unsolicited carrier-event (0x020001B0): 4 bytes\n"
                            "  value:  7\n"
                            "unsolicited utils-9 (0x04001500): 1 byte\n"
                            "  value:  9\n"),
            std::string::npos);
  EXPECT_EQ(exchange_->wait_unsolicited(1, 0.02), Outcome::transport);
  EXPECT_EQ(err_.str(), "qorextctl: 0 of 1 unsolicited frames came within 0.02 s\n");
}

TEST_F(ExchangeWith, ALateReplyIsNotTakenForTheNextRequests) {
  EXPECT_EQ(run("late", {"set-bc10", "status=1"}, 0.05), Outcome::transport);
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(out_.str(),
            "set-bc10 (0x020000B1), late reply: success\n"
            "set-ddtm (0x020000B8): success\n");
}

TEST_F(ExchangeWith, AnInterruptionMayBeMeantForOneWaitOnly) {
  auto interrupt = make_pipe();
  ASSERT_EQ(write(interrupt->write.get(), "x", 1), 1);
  daemon_ = start("late");
  exchange_.emplace(*daemon_, printer_, 60, interrupt->read.get());
  EXPECT_EQ(send({"set-bc10", "status=1"}), Outcome::transport);
  EXPECT_TRUE(exchange_->interrupted());
  char taken = 0;
  ASSERT_EQ(read(interrupt->read.get(), &taken, 1), 1);
  exchange_->resume();
  EXPECT_FALSE(exchange_->over());
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
}

TEST_F(ExchangeWith, AConditionIsWaitedForWhileFramesAreShown) {
  EXPECT_EQ(run("notify", {"set-ddtm", "ddtm=1"}), Outcome::success);
  auto has_come = [&] { return out_.str().find("utils-9") != std::string::npos; };
  EXPECT_TRUE(exchange_->wait_until(has_come, Deadline::in_seconds(10)));
  EXPECT_FALSE(exchange_->wait_until([] { return false; }, Deadline::in_seconds(0.02)));
}

// What the machine may add to a wait when it is busy.
constexpr double kMaxLate = 3;

TEST_F(ExchangeWith, AFloodOfUnsolicitedBytesEndsWithTheTimeout) {
  for (const char* mode : {"flood-frames", "flood-garbage"}) {
    Deadline most = Deadline::in_seconds(0.1 + kMaxLate);
    EXPECT_EQ(run(mode, {"get-ddtm"}, 0.1), Outcome::transport);
    EXPECT_FALSE(most.passed()) << mode;
    EXPECT_NE(err_.str().find("no reply to get-ddtm within 0.1 s"), std::string::npos);
    EXPECT_FALSE(exchange_->wait_until([] { return false; }, Deadline::in_seconds(0.1)));
    EXPECT_EQ(exchange_->finish(false), Outcome::transport);
    exchange_.reset();
    daemon_.reset();
    EXPECT_FALSE(most.passed()) << mode;
    err_.str("");
    out_.str("");
  }
}

TEST_F(ExchangeWith, AFloodOfRepliesEndsWithTheTimeoutAndIsNotKept) {
  EXPECT_EQ(run("flood-replies", {"set-ddtm", "ddtm=1"}, 0.2), Outcome::success);
  Deadline most = Deadline::in_seconds(0.5 + kMaxLate);
  EXPECT_FALSE(exchange_->wait_until([] { return false; }, Deadline::in_seconds(0.5)));
  EXPECT_LE(daemon_->replies().pending().size(), 2 * kMaxFrameBytes);
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
  EXPECT_FALSE(most.passed());
  EXPECT_NE(err_.str().find("bytes that no request asked for: ****"), std::string::npos);
  EXPECT_NE(err_.str().find(" more\n"), std::string::npos);
  EXPECT_LT(err_.str().size(), 1000U);
}

TEST_F(ExchangeWith, AnInterruptionEndsTheWait) {
  auto interrupt = make_pipe();
  ASSERT_EQ(write(interrupt->write.get(), "x", 1), 1);
  daemon_ = start("silent");
  exchange_.emplace(*daemon_, printer_, 60, interrupt->read.get());
  EXPECT_EQ(send({"get-ddtm"}), Outcome::transport);
  EXPECT_TRUE(exchange_->over());
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: no reply to get-ddtm before the interruption\n"
            "qorextctl: interrupted\n");
}

}  // namespace
}  // namespace qorextctl
