// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/carrier_clients.h"

#include "tests/unit/product/serving_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace carrier_clients_test {

const std::string kTry = "qmi_qorext_sprint_client_init_with_type: Try (";

class CarrierClients : public FakePhone {
 protected:
  // The last four lines of the trace of this attempt.
  std::vector<std::string> last_of_attempt(int number) const {
    std::string end = "log: " + kTry + std::to_string(number) + ")";
    for (size_t i = 3; i < trace.size(); ++i) {
      if (trace[i].rfind(end, 0) == 0) return {&trace[i - 3], &trace[i] + 1};
    }
    return {};
  }

  static Lines watched(const std::string& name) {
    return {"call notifier_init " + name, "log: sprint_client_init: qmi_client_notifier_init \n"};
  }
  // The trace from the poll that succeeds to the end of the attempt.
  static Lines opened(const std::string& name, const std::string& log_name) {
    const std::string kList = "log: sprint_client_init: qmi_client_get_service_list() returned 0 ";
    return {"call get_service_list " + name,           kList + "num_services = 1\n",
            "call get_service_list " + name + " list", kList + "num_entries = 1 num_services = 1\n",
            "log: sprint_client_init: " + log_name,    "call client_init " + name,
            "log: sprint_client_init Succeeded\n",     "call release notifier"};
  }

  int open(int type) {
    static char nas[] = "nas";
    return qmi_qorext_sprint_client_init_with_type(nas, type);
  }
};

TEST_F(CarrierClients, NasThenDmsAreOpened) {
  EXPECT_EQ(qmi_qorext_sprint_client_init(), 0);
  Lines expected = {"call nas_get_service_object 1 175 6", "call dms_get_service_object 1 56 6"};
  for (auto [name, log_name] : {std::pair("nas", "NAS"), {"dms", "DMS"}}) {
    expected = expected + watched(name) + opened(name, log_name) +
               Lines{std::string("log: qmi_qorext_sprint_client_init: ") + log_name +
                     " Client Init rc: 0"};
  }
  EXPECT_EQ(trace, expected);
  EXPECT_EQ(indication_callback, nullptr);
}

TEST_F(CarrierClients, DmsIsNotOpenedAfterAFailedNas) {
  init_results = {-5};
  EXPECT_EQ(qmi_qorext_sprint_client_init(), -5);
  EXPECT_THAT(trace, Not(Contains("call notifier_init dms")));
  EXPECT_EQ(trace.back(), "log: qmi_qorext_sprint_client_init: NAS Client Init rc: -5");
}

TEST_F(CarrierClients, FailedDmsIsReturned) {
  init_results = {0, -5};
  EXPECT_EQ(qmi_qorext_sprint_client_init(), -5);
  EXPECT_EQ(trace.back(), "log: qmi_qorext_sprint_client_init: DMS Client Init rc: -5");
}

TEST_F(CarrierClients, MissingServiceObjectFailsFiveTimes) {
  has_service_objects = false;
  EXPECT_EQ(qmi_qorext_sprint_client_init(), -1);
  Lines expected = {"call nas_get_service_object 1 175 6", "call dms_get_service_object 1 56 6"};
  for (int attempt = 1; attempt <= 5; ++attempt) {
    expected.emplace_back("log: sprint_client_init: qorext_hook_get_serivce_object failed.\n");
    expected.push_back("log: " + kTry + std::to_string(attempt) + "): Client init fail. rc = -1\n");
  }
  expected.emplace_back("log: qmi_qorext_sprint_client_init: NAS Client Init rc: -1");
  EXPECT_EQ(trace, expected);
}

TEST_F(CarrierClients, FailedNotifierIsNotReleased) {
  notifier_results = {-4};
  EXPECT_EQ(open(kNasService), -4);
  EXPECT_THAT(trace, Not(Contains("call release notifier")));
  EXPECT_THAT(
      std::vector<std::string>(trace.begin(), trace.begin() + 4),
      ElementsAre("call notifier_init nas", "log: sprint_client_init: qmi_client_notifier_init \n",
                  "log: sprint_client_init: qmi_client_notifier_init failed. rc = -4\n",
                  "log: " + kTry + "1): Client init fail. rc = -4\n"));
}

TEST_F(CarrierClients, MissingServiceFailsAfterFiveTimesFiveWaits) {
  service_lists = {{-2, 0}};
  EXPECT_EQ(open(kNasService), -2);
  EXPECT_EQ(deadlines.size(), 25u);
  EXPECT_THAT(logs(), Contains("sprint_client_init: wait for server to come up.\n").Times(25));
  EXPECT_THAT(trace, Contains("call release notifier").Times(5));
  EXPECT_EQ(trace.back(), "log: " + kTry + "5): Client init fail. rc = -2\n");
  EXPECT_THAT(entry_counts, ElementsAre(0u, 0u, 0u, 0u, 0u));
}

TEST_F(CarrierClients, PollingStopsWhenTheServiceIsUp) {
  service_lists = {{-2, 0}, {-2, 0}, {0, 1}};
  EXPECT_EQ(open(kNasService), 0);
  EXPECT_EQ(deadlines.size(), 2u);
}

TEST_F(CarrierClients, FailedPollIsLoggedBeforeItsWait) {
  service_lists = {{-2, 0}, {0, 1}};
  open(kNasService);
  const Lines kFailedPoll = {
      "call get_service_list nas",
      "log: sprint_client_init: qmi_client_get_service_list() returned -2 num_services = 0\n",
      "log: sprint_client_init: wait for server to come up.\n", "call clock_gettime 1"};
  EXPECT_EQ(trace, watched("nas") + kFailedPoll + opened("nas", "NAS"));
}

TEST_F(CarrierClients, SignalledServiceIsPolledWithoutWaiting) {
  service_lists = {{-2, 0}};
  signal_on_wait = true;
  EXPECT_EQ(open(kNasService), -2);
  EXPECT_EQ(deadlines.size(), 5u) << "one wait in each attempt";
}

TEST_F(CarrierClients, UnknownServiceTypeFailsFiveTimes) {
  EXPECT_EQ(open(3), -1);
  EXPECT_THAT(last_of_attempt(1), ElementsAre("log: sprint_client_init: Unknown",
                                              "log: sprint_client_init: qmi_client_init failed. "
                                              "rc = -1\n",
                                              "call release notifier",
                                              "log: " + kTry + "1): Client init fail. rc = -1\n"));
  EXPECT_THAT(logs(), Contains("sprint_client_init: Unknown").Times(5));
  EXPECT_THAT(trace, Not(Contains("call client_init nas")));
}

TEST_F(CarrierClients, ThirdAttemptMaySucceed) {
  init_results = {-5, -6, 0};
  EXPECT_EQ(open(kDmsService), 0);
  EXPECT_THAT(logs(), testing::IsSupersetOf({kTry + "1): Client init fail. rc = -5\n",
                                             kTry + "2): Client init fail. rc = -6\n"}));
  EXPECT_EQ(trace.back(), "call release notifier");
}

TEST_F(CarrierClients, ListIsLimitedToSixteenRecords) {
  service_lists = {{0, 17}};
  open(kNasService);
  EXPECT_THAT(entry_counts, ElementsAre(16u));
  EXPECT_THAT(opened_records, ElementsAre(1u)) << "the first record is the one used";
}

TEST_F(CarrierClients, FailedListAfterGoodPollsEndsTheAttempt) {
  service_lists = {{0, 1}, {-3, 1}};
  EXPECT_EQ(open(kNasService), -3);
  EXPECT_THAT(
      last_of_attempt(1),
      ElementsAre("call get_service_list nas list",
                  "log: sprint_client_init: qmi_client_get_service_list() returned -3 "
                  "num_entries = 1 num_services = 1\n",
                  "call release notifier", "log: " + kTry + "1): Client init fail. rc = -3\n"));
  EXPECT_THAT(logs(), Not(Contains("sprint_client_init: NAS")));
}

TEST_F(CarrierClients, InstancesAreListedAlsoAfterFailedPolls) {
  service_lists = {{-2, 3}, {-2, 3}, {-2, 3}, {-2, 3}, {-2, 3}, {0, 3}};
  EXPECT_EQ(open(kNasService), 0);
  EXPECT_EQ(deadlines.size(), 5u);
  EXPECT_THAT(entry_counts, ElementsAre(3u));
}

TEST_F(CarrierClients, EachSendGoesToItsOwnClient) {
  qmi_qorext_sprint_client_init();
  fail_send(0x24, -9);
  uint8_t response[8] = {};
  uint8_t request[6] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(qmi_qorext_sprint_nas_send_msg_sync(0x24, nullptr, 0, response, 8), -9);
  EXPECT_EQ(qmi_qorext_sprint_dms_send_msg_sync(0x3B, request, 6, response, 8), 0);
  ASSERT_EQ(exchanges.size(), 2u);
  EXPECT_EQ(exchanges[0].service, "nas");
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
  EXPECT_EQ(exchanges[1].service, "dms");
  EXPECT_EQ(exchanges[1].request, Bytes(request, request + 6));
  EXPECT_EQ(exchanges[1].response_length, 8u);
  EXPECT_EQ(exchanges[1].timeout_ms, 15000u);
}

TEST_F(CarrierClients, FailedSendIsNotRepeated) {
  qmi_qorext_sprint_client_init();
  for (int rc = QMI_INVALID_PARAM_ERR; rc <= 1; ++rc) {
    exchanges.clear();
    fail_send(0x24, rc);
    fail_send(0x3B, rc);
    uint8_t response[8] = {};
    EXPECT_EQ(qmi_qorext_sprint_nas_send_msg_sync(0x24, nullptr, 0, response, 8), rc);
    EXPECT_EQ(qmi_qorext_sprint_dms_send_msg_sync(0x3B, nullptr, 0, response, 8), rc);
    EXPECT_EQ(exchanges.size(), 2u);
  }
}

// Handles are never closed, so each of these tests needs its own process.
class CarrierHandles : public CarrierClients {
 protected:
  CarrierHandles() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  // Opens the clients with these results, sends to both and prints the outcome.
  void open_and_send(std::deque<int> results) {
    if (!results.empty()) {
      init_results = results;
      qmi_qorext_sprint_client_init();
    }
    trace.clear();
    uint8_t response[8] = {};
    int nas = qmi_qorext_sprint_nas_send_msg_sync(0x24, nullptr, 0, response, 8);
    int dms = qmi_qorext_sprint_dms_send_msg_sync(0x3B, nullptr, 0, response, 8);
    for (const std::string& line : trace) fprintf(stderr, "%s\n", line.c_str());
    fprintf(stderr, "nas %d dms %d\n", nas, dms);
    _exit(0);
  }
};

const std::string kNasRefused =
    "log: qmi_qorext_sprint_nas_send_msg_sync: Handler not initialized!\n";
const std::string kDmsRefused =
    "log: qmi_qorext_sprint_dms_send_msg_sync: Handler not initialized!\n";

TEST_F(CarrierHandles, SendBeforeTheClientsAreOpenIsRefused) {
  EXPECT_EXIT(open_and_send({}), testing::ExitedWithCode(0),
              kNasRefused + kDmsRefused + "nas -1 dms -1");
}

TEST_F(CarrierHandles, FailedNasLeavesBothClientsClosed) {
  EXPECT_EXIT(open_and_send({-5}), testing::ExitedWithCode(0),
              kNasRefused + kDmsRefused + "nas -1 dms -1");
}

TEST_F(CarrierHandles, FailedDmsLeavesTheNasClientOpen) {
  EXPECT_EXIT(open_and_send({0, -5}), testing::ExitedWithCode(0),
              "send nas 0x24\n" + kDmsRefused + "nas 0 dms -1");
}

}  // namespace carrier_clients_test
