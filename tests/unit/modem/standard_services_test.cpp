// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class Nas : public ModemTest {
 protected:
  json ask_nas(const char* name, const json& fields = {}) {
    return ask(modem::nas_service(), name, fields);
  }
  static std::string digits(const char* text) {
    std::string_view view = text;
    return qmi_json::to_hex(Bytes(view.begin(), view.end()));
  }
};

TEST_F(Nas, ServingSystemIsTheLteCell) {
  json answer = ask_nas("get_serving_system");
  EXPECT_EQ(answer["result"], success());
  EXPECT_EQ(answer["registration_state"], 1);
  EXPECT_EQ(answer["radio_interfaces"], (json{8}));
  EXPECT_EQ(answer["mcc"], 1);
  EXPECT_EQ(answer["mnc"], 1);
  EXPECT_EQ(answer["network_description"], "Lakeshore");
  EXPECT_EQ(answer["cell_id"], 0x1A2D03);
}

TEST_F(Nas, WithoutServiceThereIsNoNetworkNoSignalAndNoTransmitter) {
  state().lte.service_state = modem::kNoService;
  json system = ask_nas("get_serving_system");
  EXPECT_EQ(system["registration_state"], 2);
  EXPECT_FALSE(system.contains("mcc"));
  EXPECT_FALSE(system.contains("cell_id"));
  EXPECT_EQ(ask_nas("get_sig_info"), (json{{"result", success()}}));
  EXPECT_EQ(ask_nas("get_tx_rx_info", {{"radio_interface", 8}})["result"], result(1, 93));
}

TEST_F(Nas, SignalAndReceiverPowerAgree) {
  json signal = ask_nas("get_sig_info");
  EXPECT_EQ(signal["lte_rssi"], -67);
  EXPECT_EQ(signal["lte_rsrq"], -9);
  EXPECT_EQ(signal["lte_rsrp"], -96);
  EXPECT_EQ(signal["lte_snr"], 134);

  json info = ask_nas("get_tx_rx_info", {{"radio_interface", 8}});
  EXPECT_EQ(info["result"], success());
  EXPECT_EQ(info["rx0_tuned"], 1);
  EXPECT_EQ(info["rx0_power"], -670);
  EXPECT_EQ(info["rx0_rsrp"], -960);
  EXPECT_EQ(info["rx1_power"], -690);
  EXPECT_EQ(info["tx_in_traffic"], 1);
  EXPECT_EQ(info["tx_power"], -45);
}

TEST_F(Nas, UnusedRadioInterfaceIsRefused) {
  EXPECT_EQ(ask_nas("get_tx_rx_info", {{"radio_interface", 5}})["result"], result(1, 93));
}

TEST_F(Nas, OperatorNamesAreInTheGsmAlphabet) {
  json answer = ask_nas("get_plmn_name", {{"mcc", 999}, {"mnc", 70}});
  EXPECT_EQ(answer["result"], success());
  EXPECT_EQ(answer["short_name_coding"], 0);
  EXPECT_EQ(answer["short_name"], "1c720c2054656c");  // Ærø Tel
  EXPECT_EQ(answer["long_name"].get<std::string>().substr(0, 8), "1c720c20");
}

TEST_F(Nas, UnknownOperatorHasNoName) {
  EXPECT_EQ(ask_nas("get_plmn_name", {{"mcc", 555}, {"mnc", 1}}), (json{{"result", success()}}));
}

TEST_F(Nas, AkeyIsStoredWhenTheSpcMatches) {
  std::string akey = "12345678901234567890123456";
  EXPECT_EQ(ask_nas("write_akey", {{"spc", digits("000000")}, {"akey", digits(akey.c_str())}}),
            (json{{"result", success()}}));
  EXPECT_EQ(state().security.akey, akey);
}

TEST_F(Nas, AkeyIsRefusedWithAWrongSpcOrWithoutDigits) {
  EXPECT_EQ(ask_nas("write_akey", {{"spc", digits("000001")},
                                   {"akey", digits("12345678901234567890123456")}})["result"],
            result(1, 85));
  EXPECT_EQ(ask_nas("write_akey", {{"spc", digits("000000")},
                                   {"akey", digits("1234567890123456789012345x")}})["result"],
            result(1, 48));
  EXPECT_EQ(state().security.akey, "");
}

class Dms : public Nas {
 protected:
  json ask_dms(const char* name, const json& fields) {
    return ask(modem::dms_service(), name, fields)["result"];
  }
};

TEST_F(Dms, SubsidyLockCodeIsChecked) {
  EXPECT_EQ(ask_dms("verify_subsidy_lock", {{"code", digits("246810")}}), success());
  EXPECT_EQ(ask_dms("verify_subsidy_lock", {{"code", digits("246811")}}), result(1, 85));
}

TEST_F(Dms, SpcChangesOnlyWithTheCurrentOne) {
  EXPECT_EQ(
      ask_dms("write_spc", {{"current_spc", digits("111111")}, {"new_spc", digits("654321")}}),
      result(1, 85));
  EXPECT_EQ(
      ask_dms("write_spc", {{"current_spc", digits("000000")}, {"new_spc", digits("654321")}}),
      success());
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 32}})["data"], digits("654321"));
  EXPECT_EQ(
      ask_dms("write_spc", {{"current_spc", digits("000000")}, {"new_spc", digits("111111")}}),
      result(1, 85));
}

TEST_F(Dms, SpcIsRefusedWhenItsItemDoesNotExist) {
  state().nv.erase({32});
  EXPECT_EQ(
      ask_dms("write_spc", {{"current_spc", digits("000000")}, {"new_spc", digits("654321")}}),
      result(1, 85));
}

}  // namespace
