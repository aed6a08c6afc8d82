// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class CarrierRequests : public ModemTest {};

TEST_F(CarrierRequests, BandsAreReadBackAsWritten) {
  EXPECT_EQ(ask_qorext("write_band", {{"selector", 0}, {"band", 0}}), (json{{"status", 0}}));
  EXPECT_EQ(ask_qorext("write_band", {{"selector", 1}, {"band", 5}}), (json{{"status", 0}}));
  EXPECT_EQ(ask_qorext("read_band", {{"selector", 0}}), (json{{"status", 0}, {"band", 0}}));
  EXPECT_EQ(ask_qorext("read_band", {{"selector", 1}}), (json{{"status", 0}, {"band", 5}}));
}

TEST_F(CarrierRequests, UnknownBandSelectorIsRefused) {
  EXPECT_EQ(ask_qorext("read_band", {{"selector", 2}}), (json{{"status", 1}, {"band", 0}}));
  EXPECT_EQ(ask_qorext("write_band", {{"selector", 2}, {"band", 1}}), (json{{"status", 1}}));
}

TEST_F(CarrierRequests, ProfileIsStored) {
  EXPECT_EQ(ask_qorext("switch_profile", {{"profile", 3}}), (json{{"status", 0}}));
  EXPECT_EQ(state().carrier.active_profile, 3U);
}

TEST_F(CarrierRequests, BsrTimerIsReadBackAsSet) {
  EXPECT_EQ(ask_qorext("set_bsr_timer", {{"timer", 42}}), (json{{"outcome", 1}, {"error", 0}}));
  EXPECT_EQ(ask_qorext("get_bsr_timer"), (json{{"outcome", 1}, {"error", 0}, {"timer", 42}}));
}

TEST_F(CarrierRequests, TotOrderIsReadBackAsUpdated) {
  EXPECT_EQ(ask_qorext("update_tot_order", {{"entries", {9, 8, 7, 6}}}),
            (json{{"outcome", 1}, {"error", 0}}));
  EXPECT_EQ(ask_qorext("get_tot_order"), (json{{"result", success()}, {"entries", {9, 8, 7, 6}}}));
}

TEST_F(CarrierRequests, RoamingListSegmentIsStoredWithItsSize) {
  std::string segment(2 * 16384, '7');
  EXPECT_EQ(ask_qorext("set_roaming_list_segment", {{"segment", segment}}), (json{{"status", 0}}));
  EXPECT_EQ(ask_qorext("set_roaming_list_segment", {{"segment", "0102"}}), (json{{"status", 0}}));
  EXPECT_EQ(state().carrier.roaming_list.segments, 2U);
  EXPECT_EQ(state().carrier.roaming_list.last_segment, (Bytes{1, 2}));
}

TEST_F(CarrierRequests, FactoryResetRestoresTheStartState) {
  ask_qorext("set_bsr_timer", {{"timer", 42}});
  ask_qorext("element_write", {{"rde_id", 10018}, {"length", 1}, {"data", "02"}});
  EXPECT_EQ(ask_qorext("factory_reset", {{"mode", 255}}), (json{{"outcome", 1}}));
  EXPECT_EQ(ask_qorext("get_bsr_timer")["timer"], 300);
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 10018}})["data"], "00");
}

TEST_F(CarrierRequests, ActiveApnsHaveTheirNamesAndValues) {
  json answer = ask_qorext("get_active_ehrpd_apn");
  EXPECT_EQ(answer["result"], success());
  EXPECT_EQ(answer["count"], 2);
  EXPECT_EQ(answer["count_high"], 1);
  EXPECT_EQ(answer["second_value"][0], 0xC000020A);
  EXPECT_EQ(answer["remaining_bytes"][1], "20010db800000000000000000000000b");
  std::string name = answer["name"][1];
  EXPECT_EQ(name.substr(0, 24),
            qmi_json::to_hex(Bytes{'i', 'm', 's', '.', 'e', 'x', 'a', 'm', 'p', 'l', 'e', 0}));
  EXPECT_EQ(answer["name"][7], std::string(206, '0'));
}

TEST_F(CarrierRequests, NoApnsMeansNoEntries) {
  state().ehrpd_apns.clear();
  json answer = ask_qorext("get_active_ehrpd_apn");
  EXPECT_EQ(answer["count"], 0);
  EXPECT_EQ(answer["count_high"], 0);
}

TEST_F(CarrierRequests, LteStateAndChannelsAreThoseOfTheCell) {
  EXPECT_EQ(ask_qorext("get_lte_service_state"),
            (json{{"outcome", 1}, {"error", 0}, {"state", 2}}));
  EXPECT_EQ(ask_qorext("get_lte_channel"), (json{{"outcome", 1},
                                                 {"error", 0},
                                                 {"first_channel", 26365},
                                                 {"second_channel", 8365},
                                                 {"third_value", 25},
                                                 {"fourth_value", 3}}));
}

TEST_F(CarrierRequests, WithoutServiceThereAreNoChannels) {
  state().lte.service_state = modem::kNoService;
  EXPECT_EQ(ask_qorext("get_lte_channel"), (json{{"outcome", 1}, {"error", 0}}));
}

// The record is hexadecimal text, which JSON shows as hexadecimal bytes.
std::string text_of(const json& answer) {
  auto bytes = qmi_json::from_hex(answer["data"].get<std::string>());
  return {bytes->begin(), bytes->end()};
}

TEST_F(CarrierRequests, EngineeringRecordsAreHexadecimalText) {
  json call = ask_qorext("engineering_info", {{"type", 0}});
  EXPECT_EQ(call["status"], 0);
  EXPECT_EQ(text_of(call).size(), 2 * 164U);
  EXPECT_EQ(text_of(call).substr(0, 8), "04000000");
  EXPECT_EQ(text_of(call).substr(2 * 24, 8), "5c120c00");  // SID 4700, NID 12

  json session = ask_qorext("engineering_info", {{"type", 1}});
  EXPECT_EQ(session["status"], 0);
  EXPECT_EQ(text_of(session).size(), 2 * 52U);
  EXPECT_EQ(text_of(session).substr(0, 4), "dc01");  // channel 476
}

TEST_F(CarrierRequests, GivenEngineeringTextReplacesTheRecord) {
  state().engineering.evdo_text = "0G";
  EXPECT_EQ(text_of(ask_qorext("engineering_info", {{"type", 1}})), "0G");
}

TEST_F(CarrierRequests, UnknownTypeOfEngineeringInfoIsRefused) {
  EXPECT_EQ(ask_qorext("engineering_info", {{"type", 2}})["status"], 1);
}

}  // namespace
