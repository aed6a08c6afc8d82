// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class FeatureRequests : public ModemTest {
 protected:
  json utils(int type, const std::string& data) {
    return ask_qorext("utils", {{"type", type}, {"data", data}});
  }
};

TEST_F(FeatureRequests, SilentRebootIsAnsweredWithItsData) {
  EXPECT_EQ(utils(3, ""), (json{{"unused", 0}, {"data", "0001"}}));
}

TEST_F(FeatureRequests, AutoVerifyNoticeIsStored) {
  EXPECT_EQ(utils(4, "01"), (json{{"unused", 0}, {"data", ""}}));
  EXPECT_EQ(state().features.auto_verify, (Bytes{1}));
}

TEST_F(FeatureRequests, SystemInformationFilterIsStored) {
  EXPECT_EQ(utils(5, "03")["data"], "");
  EXPECT_EQ(state().features.system_info_filter, 3);
}

TEST_F(FeatureRequests, CoverageModeAndTextAreStored) {
  EXPECT_EQ(utils(6, "02616200")["data"], "");
  EXPECT_EQ(state().features.coverage_mode, 2);
  EXPECT_EQ(state().features.coverage_text, "ab");
  EXPECT_EQ(utils(6, "")["data"], "");
  EXPECT_EQ(state().features.coverage_mode, 2);
}

TEST_F(FeatureRequests, CallEndRadioStateHas17Bytes) {
  EXPECT_EQ(utils(7, "00")["data"], "00101112131415161718191a1b1c1d1e1f");
}

TEST_F(FeatureRequests, OtherUtilityTypesAreAnsweredWithoutData) {
  EXPECT_EQ(utils(99, "00"), (json{{"unused", 0}, {"data", ""}}));
}

TEST_F(FeatureRequests, PfpRequestIsFollowedByItsIndication) {
  EXPECT_EQ(ask_qorext("pfp", {{"value", 4}}), (json{{"result", success()}, {"unused", 0}}));

  auto later = actions(std::chrono::seconds(1));
  ASSERT_EQ(later.size(), 1U);
  EXPECT_EQ(later[0].kind, Action::Kind::broadcast);
  json indication = fields_of(modem::qorext_service(), later[0].packet);
  EXPECT_EQ(indication["first_value"], 1);
  EXPECT_EQ(indication["rat"], 8);
  EXPECT_EQ(indication["tbl_idx"], 4);
  std::string bytes = indication["remaining_bytes"];
  EXPECT_EQ(bytes.size(), 2 * 224U);
  EXPECT_EQ(bytes.substr(0, 8), "30022b02");  // 560, 555
}

TEST_F(FeatureRequests, HobStatesAreRecordedInTheirOrder) {
  EXPECT_EQ(ask_qorext("hob", {{"state", 255}}), (json{{"unused", 0}}));
  EXPECT_EQ(ask_qorext("hob", {{"state", 1}}), (json{{"unused", 0}}));
  EXPECT_EQ(state().features.hob_states, (std::vector<uint32_t>{255, 1}));
}

TEST_F(FeatureRequests, OnlyTheLastHobStatesAreRecorded) {
  for (size_t i = 0; i < modem::kMaxHobStates; ++i) ask_qorext("hob", {{"state", 255}});
  ask_qorext("hob", {{"state", 0}});
  EXPECT_EQ(state().features.hob_states.size(), modem::kMaxHobStates);
  EXPECT_EQ(state().features.hob_states.back(), 0U);
}

TEST_F(FeatureRequests, DataPlmnRecordHas560Bytes) {
  json answer = ask_qorext("data_plmn");
  EXPECT_EQ(answer["result"], success());
  std::string record = answer["record"];
  EXPECT_EQ(record.size(), 2 * 560U);
  EXPECT_EQ(record.substr(0, 24), "010000000100010008000000");
}

TEST_F(FeatureRequests, TunerSettingIsStoredAndReturned) {
  EXPECT_EQ(ask_qorext("tuner", {{"data", "0a0b0c"}}), (json{{"data", "0a0b0c"}}));
  EXPECT_EQ(state().features.tuner, (Bytes{0x0A, 0x0B, 0x0C}));
}

}  // namespace
