// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/vendor_client.h"

#include "tests/unit/product/serving_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace vendor_client_test {

const std::string kInit = "qmi_qorext_hook_client_init";

class VendorClient : public FakePhone {
 protected:
  size_t waits() const { return deadlines.size(); }
  Lines end_of_trace(long lines) const {
    EXPECT_GE(static_cast<long>(trace.size()), lines);
    return {trace.end() - lines, trace.end()};
  }
  // The trace of one wait after a failed look-up, from the deadline's clock on.
  Lines wait_lines() const {
    auto waiting =
        std::find(trace.begin(), trace.end(), "log: " + kInit + ": wait for server to come up.\n");
    EXPECT_NE(waiting, trace.end());
    return {waiting + 1, trace.end()};
  }
  // The trace from the look-up that succeeds to the end.
  static Lines opened_lines() {
    std::string list = "log: " + kInit + ": qmi_client_get_service_list() returned 0 ";
    return {"call get_service_list vendor",      list + "num_services = 1\n",
            "call get_service_list vendor list", list + "num_entries = 1 num_services = 1\n",
            "call client_init vendor",           "call release notifier",
            "log: " + kInit + " Succeeded\n"};
  }
};

TEST_F(VendorClient, RunningServiceIsOpenedWithoutAWait) {
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  EXPECT_EQ(trace, (Lines{"call vendor_get_service_object 1 1 4",
                          "log: " + kInit + ": qorext_hook_get_serivce_object\n",
                          "call notifier_init vendor",
                          "log: " + kInit + ": qmi_client_notifier_init \n"}) +
                       opened_lines());
  EXPECT_EQ(waits(), 0u);
}

TEST_F(VendorClient, MissingServiceObjectFails) {
  has_service_objects = false;
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_THAT(logs(), ElementsAre(kInit + ": qorext_hook_get_serivce_object\n",
                                  kInit + ": qorext_hook_get_serivce_object failed.\n"));
  EXPECT_THAT(trace, Not(Contains("call notifier_init vendor")));
}

TEST_F(VendorClient, FailedNotifierIsNotReleased) {
  notifier_results = {-4};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_THAT(logs(), ElementsAre(kInit + ": qorext_hook_get_serivce_object\n",
                                  kInit + ": qmi_client_notifier_init \n",
                                  kInit + ": qmi_client_notifier_init failed. rc = -4\n"));
  EXPECT_THAT(trace, Not(Contains("call release notifier")));
}

TEST_F(VendorClient, BringUpFailsAfter500AttemptsOfOneSecond) {
  service_lists = {{-2, 0}};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_EQ(waits(), 500u);
  EXPECT_THAT(logs(), Contains(kInit + ": wait for server to come up.\n").Times(500));
  EXPECT_THAT(end_of_trace(3), ElementsAre("call clock_gettime 1",
                                           "log: " + kInit + ": Giving up- Retries exceede 500 \n",
                                           "call release notifier"));
  for (const timespec& deadline : deadlines) EXPECT_EQ(deadline.tv_sec, 1001);
}

TEST_F(VendorClient, EachFailedAttemptLogsItsResultAndWaits) {
  service_lists = {{-2, 0}, {0, 1}};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  std::vector<std::string> attempt(trace.begin() + 4, trace.begin() + 9);
  EXPECT_THAT(attempt, ElementsAre("call get_service_list vendor",
                                   "log: " + kInit +
                                       ": qmi_client_get_service_list() returned -2 num_services = "
                                       "0\n",
                                   "log: " + kInit + ": wait for server to come up.\n",
                                   "call clock_gettime 1", "call get_service_list vendor"));
  EXPECT_EQ(waits(), 1u);
}

TEST_F(VendorClient, AttemptsAfterTheSignalDoNotWait) {
  service_lists = {{-2, 0}};
  signal_on_wait = true;
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_EQ(waits(), 1u);
  EXPECT_THAT(logs(), Contains(kInit + ": wait for server to come up.\n").Times(500));
}

TEST_F(VendorClient, WaitHasOneDeadline) {
  service_lists = {{-2, 0}, {0, 1}};
  wait_results = {0, EINVAL, ETIMEDOUT};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  ASSERT_EQ(waits(), 3u);
  for (const timespec& deadline : deadlines) EXPECT_EQ(deadline.tv_sec, 1001);
  EXPECT_THAT(logs(), Contains(kInit + ": wait for server to come up.\n").Times(1));
}

TEST_F(VendorClient, TimeoutFlagIsTheResultOfTheLastWait) {
  service_lists = {{-2, 0}, {-2, 0}, {0, 1}};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  EXPECT_THAT(timed_out_in_waits, ElementsAre(0u, 0u)) << "cleared before each wait";
  EXPECT_EQ(signal->timed_out, 1u);

  service_lists = {{-2, 0}, {0, 1}};
  signal_on_wait = true;
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  EXPECT_EQ(signal->timed_out, 0u);
}

TEST_F(VendorClient, ServiceWithoutInstancesIsReadyWhenTheCallSucceeds) {
  service_lists = {{0, 0}};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  EXPECT_EQ(waits(), 0u);
}

TEST_F(VendorClient, SeparateModemNeedsASecondInstance) {
  for (const char* baseband : {"MDM", "mdm2", "xMdMx"}) {
    properties["ro.baseband"] = baseband;
    service_lists = {{0, 1}, {0, 1}, {0, 2}};
    deadlines.clear();
    EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0) << baseband;
    EXPECT_EQ(waits(), 2u) << baseband;
  }
}

TEST_F(VendorClient, OtherBasebandsNeedOneInstance) {
  properties["ro.baseband"] = "msm";
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), 0);
  EXPECT_EQ(waits(), 0u);
}

TEST_F(VendorClient, SeparateModemWithOneInstanceFails) {
  properties["ro.baseband"] = "MDM";
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_EQ(waits(), 500u);
}

TEST_F(VendorClient, DeadlineIsMonotonicForClockOne) {
  service_lists = {{-2, 0}, {0, 1}};
  fake_now = {1000, 5};
  qmi_qorext_hook_client_init(handleUnsolMsg);
  EXPECT_THAT(trace, Contains("call clock_gettime 1"));
  EXPECT_THAT(trace, Not(Contains("call gettimeofday")));
  ASSERT_EQ(waits(), 1u);
  EXPECT_EQ(deadlines[0].tv_sec, 1001);
  EXPECT_EQ(deadlines[0].tv_nsec, 5);
}

TEST_F(VendorClient, DeadlineIsWallClockOtherwise) {
  for (uint32_t other : {0u, 2u, 3u, 0x101u, 0xFFFFFFFFu}) {
    service_lists = {{-2, 0}, {0, 1}};
    clock = other;
    fake_now = {1000, 999999000};
    trace.clear();
    deadlines.clear();
    qmi_qorext_hook_client_init(handleUnsolMsg);
    EXPECT_EQ(wait_lines(), Lines{"call gettimeofday"} + opened_lines());
    ASSERT_EQ(waits(), 1u);
    EXPECT_EQ(deadlines[0].tv_sec, 1001);
    EXPECT_EQ(deadlines[0].tv_nsec, 999999000);
  }
}

TEST_F(VendorClient, NanosecondsOfASecondOrMoreAreCarried) {
  service_lists = {{-2, 0}, {0, 1}};
  fake_now = {1000, 1000000000};
  qmi_qorext_hook_client_init(handleUnsolMsg);
  EXPECT_EQ(wait_lines(), Lines{"call clock_gettime 1"} + opened_lines());
  service_lists = {{-2, 0}, {0, 1}};
  fake_now = {1000, 999999999};
  qmi_qorext_hook_client_init(handleUnsolMsg);
  ASSERT_EQ(waits(), 2u);
  EXPECT_EQ(deadlines[0].tv_sec, 1002);
  EXPECT_EQ(deadlines[0].tv_nsec, 0);
  EXPECT_EQ(deadlines[1].tv_sec, 1001);
  EXPECT_EQ(deadlines[1].tv_nsec, 999999999);
}

TEST_F(VendorClient, FailedListIsLoggedAsClientInitAndReleasesTheNotifier) {
  service_lists = {{0, 1}, {-3, 1}};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_THAT(end_of_trace(3), ElementsAre("call get_service_list vendor list",
                                           "log: " + kInit + ": qmi_client_init failed. rc = -3\n",
                                           "call release notifier"));
}

TEST_F(VendorClient, FailedInitReleasesTheNotifier) {
  init_results = {-5};
  EXPECT_EQ(qmi_qorext_hook_client_init(handleUnsolMsg), -1);
  EXPECT_THAT(end_of_trace(3), ElementsAre("call client_init vendor",
                                           "log: " + kInit + ": qmi_client_init failed. rc = -5\n",
                                           "call release notifier"));
}

TEST_F(VendorClient, ListIsLimitedToSixteenRecords) {
  service_lists = {{0, 3}};
  qmi_qorext_hook_client_init(handleUnsolMsg);
  service_lists = {{0, 40}};
  qmi_qorext_hook_client_init(handleUnsolMsg);
  EXPECT_THAT(entry_counts, ElementsAre(3u, 16u));
  EXPECT_THAT(opened_records, ElementsAre(1u, 1u)) << "the first record is the one used";
}

TEST_F(VendorClient, FailedSendIsNotRepeated) {
  qmi_qorext_hook_client_init(handleUnsolMsg);
  uint8_t request = 0xFF;
  for (int rc = QMI_INVALID_PARAM_ERR; rc <= 1; ++rc) {
    exchanges.clear();
    fail_send(0x13, rc);
    uint8_t response[3] = {};
    EXPECT_EQ(qorext_send_msg_sync(0x13, &request, 1, response, 3), rc);
    EXPECT_EQ(exchanges.size(), 1u);
  }
}

TEST_F(VendorClient, SendPassesItsArgumentsAndFifteenSeconds) {
  qmi_qorext_hook_client_init(handleUnsolMsg);
  fail_send(0x13, -77);
  uint8_t request = 0xFF;
  uint8_t response[3] = {};
  EXPECT_EQ(qorext_send_msg_sync(0x13, &request, 1, response, 3), -77);
  ASSERT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].service, "vendor");
  EXPECT_EQ(exchanges[0].id, 0x13u);
  EXPECT_EQ(exchanges[0].request, Bytes{0xFF});
  EXPECT_EQ(exchanges[0].response_length, 3u);
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
}

}  // namespace vendor_client_test
