// SPDX-License-Identifier: Apache-2.0
// Services that disappear from and return to the kernel's name service, and two daemons at once.

#include "tests/e2e/support/daemon.h"
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class Services : public testing::Test {
 protected:
  void expect_item() { EXPECT_EQ(handset.serve(nv_read(28)).replies, item); }

  const std::string item = as_hex(nv_item(28, hex("06")));
  Handset handset{Handset::off};
};

TEST_F(Services, ServeADaemonThatIsStartedAgain) {
  handset.start_modem();
  handset.start_serving();
  handset.kill_modem();
  EXPECT_EQ(handset.serve(nv_read(28)).replies, as_hex(reply(kNvRead, 5)));

  handset.start_modem();
  handset.end_of_file();
  handset.start_serving();
  expect_item();
}

TEST_F(Services, SendNothingToADaemonThatWasKilled) {
  handset.start_modem();
  handset.start_serving();
  handset.daemon().process().signal(SIGKILL);
  EXPECT_EQ(handset.exit_status(), "signal 9 (Killed)");

  handset.start_serving();
  handset.indicate("carrier_event value=1");
  handset.indicate("carrier_event value=2");
  std::string first = handset.next_message();
  EXPECT_NE(first, handset.next_message());
  expect_item();
}

TEST_F(Services, AreWaitedForOneByOne) {
  handset.start_modem();
  handset.modem().command("service qorext down");
  handset.start_daemon();
  EXPECT_TRUE(handset.log().wait_for("qmi_qorext_hook_client_init: wait for server to come up."));
  handset.modem().command("service qorext up");
  EXPECT_THAT(handset.wait_until_serving(), Contains("qmi_qorext_hook_client_init Succeeded"));
  expect_item();
}

TEST_F(Services, ServeTwoInstancesOfTheDaemon) {
  handset.start_modem();
  handset.start_serving();
  qorextctl::DaemonOptions options;
  options.instance = 1;
  auto second = e2e::start_daemon(handset.phone(), options);
  ASSERT_TRUE(second->send(nv_read(28)));
  EXPECT_EQ(next_reply(*second), item);
  expect_item();

  handset.indicate("carrier_event value=258");
  EXPECT_EQ(next_message(*second), handset.next_message());

  // The second instance ignores a HOB save. The next message shows that it has processed it.
  handset.indicate("hob_save");
  handset.indicate("carrier_event value=259");
  EXPECT_EQ(next_message(*second), handset.next_message());
  second->close_requests();
  EXPECT_TRUE(second->wait_exit(time_limit()));
  EXPECT_TRUE(second->log().wait_end(time_limit()));
  EXPECT_THAT(second->log().lines(), Not(Contains(HasSubstr("dhob_write"))));
  EXPECT_TRUE(handset.log().wait_for("dhob_write: Sending DYNHOB request to BP"));
}

}  // namespace
}  // namespace e2e
