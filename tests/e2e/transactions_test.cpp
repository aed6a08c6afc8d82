// SPDX-License-Identifier: Apache-2.0
// More exchanges than there are transaction ids.

#include "tests/e2e/support/daemon.h"
#include "tests/e2e/support/handset.h"

namespace e2e {
namespace {

constexpr uint32_t kTransactions = 65536;

// Without a Handset, which searches the whole log for each request: that is too slow here.
class Transactions : public testing::Test {
 protected:
  Transactions() : modem(phone) {
    qorextctl::DaemonOptions options;
    options.max_log_lines = kLastLogLines;
    daemon = start_daemon(phone, options);
  }

  std::string serve(const Bytes& request) {
    daemon->send(request);
    return next_reply(*daemon);
  }

  PhoneRoot phone;
  ModemProcess modem;
  std::unique_ptr<qorextctl::Daemon> daemon;
};

TEST_F(Transactions, WrapAroundAndEveryReplyBelongsToItsRequest) {
  constexpr uint32_t kReportEvery = 500;
  for (uint32_t i = 0; i < kTransactions / 2 + 100; ++i) {
    Bytes setting = cdma(0x020000B1, le32(i));
    ASSERT_EQ(serve(setting), as_hex(echo(setting, 0))) << i;
    ASSERT_EQ(serve(cdma(0x020000B0)), as_hex(reply(0x020000B0, 0, le32(i)))) << i;
    if (i % kReportEvery != 0) continue;
    modem.command(fmt::format("indicate carrier_event value={}", i));
    ASSERT_EQ(next_message(*daemon), as_hex(cdma_message(0x020001B0, le32(i))));
  }
  daemon->close_requests();
  EXPECT_EQ(exit_status_of(*daemon), "exit status 0");
}

}  // namespace
}  // namespace e2e
