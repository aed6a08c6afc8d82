// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/exchange.h"

#include "tests/unit/qorextctl/fake_setup.h"
#include "tools/qorextctl/frames/arguments.h"

namespace qorextctl {
namespace {

using Words = std::vector<std::string>;

class ExchangeWith : public WithFakeDaemon {
 protected:
  Outcome run(const char* mode, const Words& words, double timeout = 10, int interrupt_fd = -1) {
    out_.str("");
    err_.str("");
    exchange_.reset();
    daemon_ = start(mode);
    exchange_.emplace(*daemon_, printer_, timeout, interrupt_fd);
    return send(words);
  }

  Outcome send(const Words& words) {
    auto command = parse_command(words, false);
    EXPECT_TRUE(command) << command.error().message;
    return exchange_->run(command->bytes, command->request);
  }

  bool wait(double seconds) {
    return exchange_->wait_until([] { return false; }, Deadline::in_seconds(seconds));
  }

  std::unique_ptr<Daemon> daemon_;
  std::optional<Exchange> exchange_;
};

struct ExchangeCase {
  const char* mode;
  Words words;
  Outcome outcome;
  const char* output;
  const char* errors;
};

// clang-format off
const ExchangeCase kExchangeCases[] = {
    {"answer", {"set-ddtm", "ddtm=1"}, Outcome::success, "set-ddtm (0x020000B8): success\n", ""},
    {"refuse", {"set-ddtm", "ddtm=1"}, Outcome::refused, "set-ddtm (0x020000B8): failure\n", ""},
    {"answer", {"get-ddtm"}, Outcome::refused,
     "get-ddtm (0x020000B7): success\n"
     "  problem: 0 bytes of data, 4 expected\n"
     "  problem: ddtm is missing: the data ends before\n", ""},
    {"twice", {"set-profile", "profile=1"}, Outcome::success,
     "set-profile (0x020000B5): success\n"
     "set-profile (0x020000B5), second reply: obsolete or not supported\n", ""},
    {"unknown", {"set-profile", "profile=1"}, Outcome::refused,
     "set-profile (0x020000B5): obsolete or not supported\n", ""},
    {"answer-and-end", {"set-profile", "profile=1"}, Outcome::transport,
     "set-profile (0x020000B5): success\n",
     "qorextctl: no second reply to set-profile: the daemon ended with exit status 3\n"},
    {"end", {"get-ddtm"}, Outcome::transport, "",
     "qorextctl: no reply to get-ddtm: the daemon ended with exit status 3\n"},
    {"part", {"get-ddtm"}, Outcome::transport, "",
     "qorextctl: no reply to get-ddtm: the daemon ended with exit status 3, received only a part: **********\n"},
};
// clang-format on

TEST_F(ExchangeWith, ReportsWhatTheDaemonAnswers) {
  for (const ExchangeCase& test : kExchangeCases) {
    EXPECT_EQ(run(test.mode, test.words), test.outcome) << test.mode;
    EXPECT_EQ(out_.str(), test.output) << test.mode;
    EXPECT_EQ(err_.str(), test.errors) << test.mode;
  }
}

TEST_F(ExchangeWith, ReportsHowTheDaemonEnds) {
  EXPECT_EQ(run("answer", {"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(exchange_->finish(true), Outcome::success);
  EXPECT_TRUE(out_.str().ends_with("daemon ended with exit status 0\n"));
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(run("end", {"get-ddtm"}), Outcome::transport);
  EXPECT_TRUE(exchange_->over());
  EXPECT_EQ(send({"get-ddtm"}), Outcome::transport);
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
}

TEST_F(ExchangeWith, ReportsUnexpectedBytesBeforeTheNextRequest) {
  for (bool show_personal : {false, true}) {
    printer_.show_personal(show_personal);
    EXPECT_EQ(run("twice", {"set-ddtm", "ddtm=1"}), Outcome::success);
    EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
    std::string shown = show_personal ? "B800000200000000060000000000000000000000"
                                      : "****************************************";
    EXPECT_EQ(err_.str(), "qorextctl: unexpected bytes in the reply pipe: " + shown + "\n");
  }
}

TEST_F(ExchangeWith, ShowsAPartOfAReplyWithPersonalData) {
  printer_.show_personal(true);
  EXPECT_EQ(run("part", {"get-ddtm"}), Outcome::transport);
  EXPECT_TRUE(err_.str().ends_with("received only a part: B700000200\n"));
}

TEST_F(ExchangeWith, ASilentDaemonEndsWithTheTimeout) {
  EXPECT_EQ(run("silent", {"get-ddtm"}, 0.05), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: no reply to get-ddtm within 0.05 s; --log shows why, a longer --timeout "
            "waits longer\n");
}

TEST_F(ExchangeWith, ARequestIsNotSentBeforeThePreviousOneIsRead) {
  EXPECT_EQ(run("unread", {"get-ddtm"}, 0.05), Outcome::transport);
  EXPECT_EQ(send({"get-ddtm"}), Outcome::transport);
  err_.str("");
  EXPECT_EQ(send({"get-nam"}), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: get-nam is not sent: the daemon has not read the previous request within "
            "0.05 s\n");
  daemon_->process().signal(SIGKILL);
}

TEST_F(ExchangeWith, UnsolicitedFramesAreShownAndCounted) {
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

TEST_F(ExchangeWith, ALateReplyIsNotTheReplyToTheNextRequest) {
  EXPECT_EQ(run("late", {"set-bc10", "status=1"}, 0.05), Outcome::transport);
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
  EXPECT_EQ(out_.str(),
            "set-bc10 (0x020000B1), late reply: success\n"
            "set-ddtm (0x020000B8): success\n");
}

TEST_F(ExchangeWith, AnInterruptEndsTheWaitUntilTheExchangeResumes) {
  auto interrupt = make_pipe();
  ASSERT_EQ(write(interrupt->write.get(), "x", 1), 1);
  EXPECT_EQ(run("late", {"set-bc10", "status=1"}, 60, interrupt->read.get()), Outcome::transport);
  EXPECT_TRUE(exchange_->interrupted());
  char taken = 0;
  ASSERT_EQ(read(interrupt->read.get(), &taken, 1), 1);
  exchange_->resume();
  EXPECT_FALSE(exchange_->over());
  EXPECT_EQ(send({"set-ddtm", "ddtm=1"}), Outcome::success);
}

TEST_F(ExchangeWith, AnInterruptEndsTheExchange) {
  auto interrupt = make_pipe();
  ASSERT_EQ(write(interrupt->write.get(), "x", 1), 1);
  EXPECT_EQ(run("silent", {"get-ddtm"}, 60, interrupt->read.get()), Outcome::transport);
  EXPECT_TRUE(exchange_->over());
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
  EXPECT_EQ(err_.str(),
            "qorextctl: no reply to get-ddtm before the interruption\n"
            "qorextctl: interrupted\n");
}

TEST_F(ExchangeWith, AConditionIsWaitedForWhileFramesAreShown) {
  EXPECT_EQ(run("notify", {"set-ddtm", "ddtm=1"}), Outcome::success);
  auto is_shown = [&] { return out_.str().find("utils-9") != std::string::npos; };
  EXPECT_TRUE(exchange_->wait_until(is_shown, soon()));
  EXPECT_FALSE(wait(0.02));
}

// The time that a busy machine may add to a wait.
constexpr double kMaxLate = 3;

TEST_F(ExchangeWith, EndlessUnsolicitedBytesDoNotDelayTheTimeout) {
  for (const char* mode : {"flood-frames", "flood-corrupt"}) {
    Deadline limit = Deadline::in_seconds(0.1 + kMaxLate);
    EXPECT_EQ(run(mode, {"get-ddtm"}, 0.1), Outcome::transport);
    EXPECT_FALSE(limit.passed()) << mode;
    EXPECT_NE(err_.str().find("no reply to get-ddtm within 0.1 s"), std::string::npos);
    EXPECT_FALSE(wait(0.1));
    EXPECT_EQ(exchange_->finish(false), Outcome::transport);
    exchange_.reset();
    daemon_.reset();
    EXPECT_FALSE(limit.passed()) << mode;
  }
}

TEST_F(ExchangeWith, EndlessReplyBytesDoNotDelayTheTimeoutAndAreNotStored) {
  EXPECT_EQ(run("flood-replies", {"set-ddtm", "ddtm=1"}, 0.2), Outcome::success);
  Deadline limit = Deadline::in_seconds(0.5 + kMaxLate);
  EXPECT_FALSE(wait(0.5));
  EXPECT_LE(daemon_->replies().pending().size(), 2 * kMaxFrameBytes);
  EXPECT_EQ(exchange_->finish(false), Outcome::transport);
  EXPECT_FALSE(limit.passed());
  EXPECT_NE(err_.str().find("unexpected bytes in the reply pipe: ****"), std::string::npos);
  EXPECT_NE(err_.str().find(" more\n"), std::string::npos);
  EXPECT_LT(err_.str().size(), 1000U);
}

}  // namespace
}  // namespace qorextctl
