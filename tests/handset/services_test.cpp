// SPDX-License-Identifier: Apache-2.0
// Services that go and come in the kernel's name service, and two daemons beside each other.
#include <gmock/gmock.h>

#include "tests/e2e/support/carrier_fixture.h"
#include "tests/e2e/support/start_daemon.h"

namespace e2e {
namespace {

using qorextctl::Deadline;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr uint32_t kRead = 0x02000016;

class Services : public testing::Test {
 protected:
  static Bytes reading() { return cdma(kRead, words({28, 0, 0, 0})); }
  static std::string item() {
    return as_hex(reply(kRead, 0, words({28, 0, 0, 1}) + hex("06") + zeros(4)));
  }
  static std::string next_message(qorextctl::Daemon& daemon) {
    auto frame = daemon.receive_unsolicited(Deadline::in(kPatience));
    return frame ? as_hex(*frame) : "nothing";
  }

  Handset handset{Handset::off};
};

TEST_F(Services, ServeTheDaemonThatItsParentStartsAgain) {
  handset.start_modem();
  handset.start_daemon();
  handset.wait_until_serving();
  handset.kill_modem();
  EXPECT_EQ(handset.serve(reading()).replies, as_hex(reply(kRead, 5)));

  handset.start_modem();
  handset.end_of_file();
  handset.start_daemon();
  handset.wait_until_serving();
  EXPECT_EQ(handset.serve(reading()).replies, item());
}

TEST_F(Services, ForgetADaemonThatWasKilled) {
  handset.start_modem();
  handset.start_daemon();
  handset.wait_until_serving();
  handset.daemon().process().signal(SIGKILL);
  EXPECT_EQ(handset.exit_status(), "signal 9 (Killed)");

  handset.start_daemon();
  handset.wait_until_serving();
  handset.modem().command("indicate carrier_event value=1");
  handset.modem().command("indicate carrier_event value=2");
  std::string first = next_message(handset.daemon());
  EXPECT_NE(first, next_message(handset.daemon()));
  EXPECT_EQ(handset.serve(reading()).replies, item());
}

TEST_F(Services, AreWaitedForOneByOne) {
  handset.start_modem();
  handset.modem().command("service qorext down");
  handset.start_daemon();
  EXPECT_TRUE(handset.log().wait_for("qmi_qorext_hook_client_init: wait for server to come up.", 0,
                                     Deadline::in(kPatience)));
  handset.modem().command("service qorext up");
  EXPECT_THAT(handset.wait_until_serving(), Contains("qmi_qorext_hook_client_init Succeeded"));
  EXPECT_EQ(handset.serve(reading()).replies, item());
}

TEST_F(Services, ServeTwoInstancesOfTheDaemon) {
  handset.start_modem();
  handset.start_daemon(0);
  handset.wait_until_serving();
  qorextctl::DaemonOptions options;
  options.instance = 1;
  auto second = e2e::start_daemon(handset.phone(), options);
  ASSERT_TRUE(second->send(reading()));
  auto frame = second->receive_reply(qorextctl::ReplyForm::cdma, Deadline::in(kPatience));
  ASSERT_TRUE(frame);
  EXPECT_EQ(as_hex(*frame), item());
  EXPECT_EQ(handset.serve(reading()).replies, item());

  handset.modem().command("indicate carrier_event value=258");
  EXPECT_EQ(next_message(*second), next_message(handset.daemon()));

  // The second instance lets a HOB save be. Behind it, it has taken the indication in.
  handset.modem().command("indicate hob_save");
  handset.modem().command("indicate carrier_event value=259");
  EXPECT_EQ(next_message(*second), next_message(handset.daemon()));
  second->close_requests();
  EXPECT_TRUE(second->wait_exit(Deadline::in(kPatience)));
  EXPECT_TRUE(second->log().wait_end(Deadline::in(kPatience)));
  EXPECT_THAT(second->log().lines(), Not(Contains(HasSubstr("dhob_write"))));
  EXPECT_TRUE(handset.log().wait_for("dhob_write: Sending DYNHOB request to BP", 0,
                                     Deadline::in(kPatience)));
}

}  // namespace
}  // namespace e2e
