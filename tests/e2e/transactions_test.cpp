// SPDX-License-Identifier: Apache-2.0
// More exchanges than there are transaction ids.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/start_daemon.h"

namespace e2e {
namespace {

using qorextctl::Deadline;

constexpr uint32_t kTransactions = 65536;

// A handset's log is looked through line by line; for this many requests that takes too long.
class Transactions : public testing::Test {
 protected:
  Transactions() : modem(phone) {
    qorextctl::DaemonOptions options;
    options.max_log_lines = kLastLogLines;
    daemon = start_daemon(phone, options);
  }

  std::string serve(const Bytes& request) {
    daemon->send(request);
    auto reply = daemon->receive_reply(qorextctl::ReplyForm::cdma, Deadline::in(kPatience));
    return reply ? as_hex(*reply) : "nothing";
  }

  PhoneRoot phone;
  ModemProcess modem;
  std::unique_ptr<qorextctl::Daemon> daemon;
};

TEST_F(Transactions, WrapAroundAndEveryAnswerStaysWithItsRequest) {
  constexpr uint32_t kReportEvery = 500;
  for (uint32_t i = 0; i < kTransactions / 2 + 100; ++i) {
    Bytes setting = cdma(0x020000B1, le32(i));
    ASSERT_EQ(serve(setting), as_hex(echo(setting, 0))) << i;
    ASSERT_EQ(serve(cdma(0x020000B0)), as_hex(reply(0x020000B0, 0, le32(i)))) << i;
    if (i % kReportEvery != 0) continue;
    modem.command(fmt::format("indicate carrier_event value={}", i));
    auto message = daemon->receive_unsolicited(Deadline::in(kPatience));
    ASSERT_TRUE(message);
    ASSERT_EQ(as_hex(*message), as_hex(cdma_message(0x020001B0, le32(i))));
  }
  daemon->close_requests();
  auto status = daemon->wait_exit(Deadline::in(kPatience));
  EXPECT_EQ(status ? describe(*status) : "still running", "exit status 0");
}

}  // namespace
}  // namespace e2e
