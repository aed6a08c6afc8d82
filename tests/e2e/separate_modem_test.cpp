// SPDX-License-Identifier: Apache-2.0
// Phones with a separate modem chip, where the vendor's service comes up twice.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"

namespace e2e {
namespace {

using qorextctl::Deadline;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;
using testing::Contains;
using testing::ElementsAre;

const std::string kInit = "qmi_qorext_hook_client_init: ";
const std::string kWait = kInit + "wait for server to come up.";

std::string found(int services) {
  return fmt::format("{}qmi_client_get_service_list() returned 0 num_services = {}", kInit,
                     services);
}

class SeparateModem : public testing::TestWithParam<const char*> {
 protected:
  SeparateModem() {
    handset.phone().set_property("ro.baseband", GetParam());
    handset.start_modem();
  }

  // The daemon has begun to wait for the second instance, and tries once a second.
  void expect_waiting() {
    constexpr seconds kWhile{2};
    auto start = Clock::now();
    ASSERT_TRUE(handset.log().wait_for(kWait, 0, Deadline::in(kPatience)));
    std::this_thread::sleep_for(kWhile);
    EXPECT_LE(waits(), (Clock::now() - start) / seconds(1) + 1);
    EXPECT_FALSE(handset.daemon().wait_exit(Deadline::in(seconds(0))));
  }
  ptrdiff_t waits() {
    Texts log = handset.log().texts();
    return std::count(log.begin(), log.end(), kWait);
  }
  Texts last(size_t count) {
    Texts log = handset.log().texts();
    return {log.end() - static_cast<ptrdiff_t>(std::min(count, log.size())), log.end()};
  }

  Handset handset{Handset::off};
};

TEST_P(SeparateModem, IsWaitedForUntilItsInstanceComesUp) {
  handset.start_daemon();
  expect_waiting();
  handset.modem().command("instances 2");
  Texts log = handset.wait_until_serving();
  EXPECT_THAT(log, Contains(found(1)));
  EXPECT_THAT(log, Contains(found(2)));
  EXPECT_THAT(log, Contains("qmi_qorext_hook_client_init Succeeded"));
  EXPECT_EQ(handset.serve(cdma(0x020000B0)).replies, as_hex(reply(0x020000B0, 0, le32(1))));
}

TEST_P(SeparateModem, ThatIsUpAlreadyIsNotWaitedFor) {
  handset.modem().command("instances 2");
  handset.start_daemon();
  EXPECT_THAT(handset.wait_until_serving(), testing::Not(Contains(kWait)));
}

// The signal of an instance that has come up stays set, so the attempts follow without a wait.
TEST_P(SeparateModem, ThatStaysAwayIsGivenUpAfterAllAttempts) {
  handset.start_daemon();
  expect_waiting();
  handset.modem().command("service qorext down");
  handset.modem().command("service qorext up");
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  EXPECT_EQ(waits(), 500);
  EXPECT_THAT(last(2), ElementsAre(kInit + "Giving up- Retries exceede 500 ",
                                   "main:qmi_qorext_hook_client_t failed = -1"));
}

INSTANTIATE_TEST_SUITE_P(Of, SeparateModem, testing::Values("mdm", "MDM9x25"));

}  // namespace
}  // namespace e2e
