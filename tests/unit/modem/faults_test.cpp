// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class Faults : public ModemTest {
 protected:
  void add(const json& fields) {
    modem::Fault fault;
    modem::Archive::from_json(fields, "", fault);
    simulator.faults.add(fault);
  }
  Bytes answer_to(const char* name, const json& fields = {}) {
    return exchange(modem::qorext_service(), request_packet(modem::qorext_service(), name, fields));
  }
  void send(const char* name, const json& fields = {}) {
    simulator.receive(modem::qorext_service(), kPeer,
                      request_packet(modem::qorext_service(), name, fields));
  }
  static Bytes tlvs_of(const Bytes& packet) { return {packet.begin() + 7, packet.end()}; }

  // A get_bsr_timer response's TLVs: outcome 1, error 0, timer 300.
  const Bytes right_tlvs{1, 12, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x2C, 1, 0, 0};
};

TEST_F(Faults, SilentRequestsAreNeitherAnsweredNorServed) {
  add({{"kind", "silent"}, {"message", "set_bsr_timer"}});
  send("set_bsr_timer", {{"timer", 1}});
  EXPECT_TRUE(actions(kMuchLater).empty());
  EXPECT_EQ(state().carrier.bsr_timer, 300U);
  EXPECT_EQ(simulator.requests.all().size(), 1U);
}

TEST_F(Faults, DelayedAnswerIsSentAfterItsDelay) {
  add({{"kind", "delay"}, {"delay_ms", 60000}});
  send("get_bsr_timer");
  EXPECT_TRUE(actions(std::chrono::seconds(30)).empty());
  auto late = actions(std::chrono::seconds(61));
  ASSERT_EQ(late.size(), 1U);
  EXPECT_EQ(tlvs_of(late[0].packet), right_tlvs);
}

TEST_F(Faults, ErrorIsReportedInTheFormOfTheMessage) {
  add({{"kind", "error"}, {"result", 1}, {"error", 93}});
  EXPECT_EQ(ask(modem::nas_service(), "get_sig_info"), (json{{"result", result(1, 93)}}));
  EXPECT_EQ(ask_qorext("get_bsr_timer"), (json{{"outcome", 0}, {"error", 93}, {"timer", 0}}));
  EXPECT_EQ(ask_qorext("read_band"), (json{{"status", 1}, {"band", 0}}));
  EXPECT_EQ(ask_qorext("factory_reset"), (json{{"outcome", 0}}));
  EXPECT_EQ(ask_qorext("switch_profile"), (json{{"status", 1}}));
}

TEST_F(Faults, RefusedRequestChangesNothing) {
  add({{"kind", "error"}});
  ask_qorext("set_bsr_timer", {{"timer", 1}});
  EXPECT_EQ(state().carrier.bsr_timer, 300U);
}

TEST_F(Faults, TruncatedAnswerStopsAtTheGivenByte) {
  add({{"kind", "truncated"}, {"bytes", 5}});
  Bytes packet = answer_to("get_bsr_timer");
  EXPECT_TRUE(qmi_idl::load_header(packet).has_value());
  EXPECT_EQ(tlvs_of(packet), Bytes(right_tlvs.begin(), right_tlvs.begin() + 5));
}

TEST_F(Faults, TruncationAfterTheEndChangesNothing) {
  add({{"kind", "truncated"}, {"bytes", 100}});
  EXPECT_EQ(tlvs_of(answer_to("get_bsr_timer")), right_tlvs);
}

TEST_F(Faults, MalformedAnswerHasATlvLengthThatIsTooLarge) {
  add({{"kind", "malformed"}});
  Bytes expected = right_tlvs;
  expected[1] = expected[2] = 0xFF;
  EXPECT_EQ(tlvs_of(answer_to("get_bsr_timer")), expected);
}

TEST_F(Faults, RandomBytesHaveTheRightSizeAndDependOnTheSeed) {
  add({{"kind", "garbage"}});
  Bytes first = tlvs_of(answer_to("get_bsr_timer"));
  EXPECT_EQ(first.size(), right_tlvs.size());
  EXPECT_NE(first, right_tlvs);

  simulator.faults = modem::Faults(1);
  add({{"kind", "garbage"}});
  EXPECT_EQ(tlvs_of(answer_to("get_bsr_timer")), first);
  simulator.faults = modem::Faults(2);
  add({{"kind", "garbage"}});
  EXPECT_NE(tlvs_of(answer_to("get_bsr_timer")), first);
}

TEST_F(Faults, AnswerToAnotherTransactionIsOtherwiseUnchanged) {
  add({{"kind", "transaction"}});
  Bytes packet = answer_to("get_bsr_timer");
  auto header = qmi_idl::load_header(packet);
  ASSERT_TRUE(header.has_value());
  EXPECT_NE(header->transaction, kTransaction);
  EXPECT_EQ(tlvs_of(packet), right_tlvs);
}

TEST_F(Faults, StrayAnswerComesBeforeTheRightOne) {
  add({{"kind", "stray"}});
  send("get_bsr_timer");
  auto due = actions();
  ASSERT_EQ(due.size(), 2U);
  EXPECT_NE(qmi_idl::load_header(due[0].packet)->transaction, kTransaction);
  EXPECT_EQ(tlvs_of(due[0].packet), right_tlvs);
  EXPECT_EQ(qmi_idl::load_header(due[1].packet)->transaction, kTransaction);
  EXPECT_EQ(tlvs_of(due[1].packet), right_tlvs);
}

TEST_F(Faults, DuplicateAnswerComesTwice) {
  add({{"kind", "duplicate"}});
  send("get_bsr_timer");
  auto due = actions();
  ASSERT_EQ(due.size(), 2U);
  EXPECT_EQ(due[0].packet, due[1].packet);
}

TEST_F(Faults, CloseWithdrawsAndPublishesTheService) {
  add({{"kind", "close"}});
  send("get_bsr_timer");
  auto due = actions();
  ASSERT_EQ(due.size(), 2U);
  EXPECT_EQ(due[0].kind, Action::Kind::withdraw);
  EXPECT_EQ(due[1].kind, Action::Kind::publish);
  EXPECT_EQ(due[0].service, modem::qorext_service().id);
}

TEST_F(Faults, FaultEndsAfterTheGivenNumberOfRequests) {
  add({{"kind", "silent"}, {"times", 2}});
  send("get_bsr_timer");
  send("get_bsr_timer");
  EXPECT_TRUE(actions(kMuchLater).empty());
  EXPECT_EQ(tlvs_of(answer_to("get_bsr_timer")), right_tlvs);
}

TEST_F(Faults, FaultAffectsOnlyItsServiceAndMessage) {
  add({{"kind", "silent"}, {"service", "qorext"}, {"message", "get_bsr_timer"}});
  EXPECT_EQ(ask(modem::nas_service(), "get_sig_info")["result"], success());
  EXPECT_EQ(ask_qorext("read_band")["status"], 0);
  send("get_bsr_timer");
  EXPECT_TRUE(actions(kMuchLater).empty());
}

TEST_F(Faults, FaultOfAMessageWithoutANameIsGivenByNumber) {
  add({{"kind", "error"}, {"message", "0xBEE"}, {"error", 7}});
  Bytes packet = exchange(modem::dms_service(),
                          modem::make_packet(qmi_idl::WireType::request, kTransaction, 0xBEE, {}));
  EXPECT_EQ(tlvs_of(packet), (Bytes{2, 4, 0, 1, 0, 7, 0}));
}

TEST_F(Faults, ClearedFaultsHaveNoEffect) {
  add({{"kind", "silent"}});
  simulator.faults.clear();
  EXPECT_EQ(tlvs_of(answer_to("get_bsr_timer")), right_tlvs);
}

}  // namespace
