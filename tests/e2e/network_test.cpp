// SPDX-License-Identifier: Apache-2.0
// Network information, and the codes that protect the modem.
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

class Network : public HandsetTest {
 protected:
  static Texts lte_data_texts() {
    return {"handle_get_lte_data: EVENT VALUE 33554624 ", "qor_qmi_sprint_get_lte_data entered "};
  }
};

const std::string kServiceState = vendor_request("get_lte_service_state");
const std::string kChannel = vendor_request("get_lte_channel");
const std::string kServingSystem = modem_request("nas", "get_serving_system", "{}");
const std::string kSignal = modem_request("nas", "get_sig_info", "{}");
const std::string kTransmitter = modem_request("nas", "get_tx_rx_info", R"({"radio_interface":8})");
const Texts kAllOfLte = {kServiceState, kChannel, kServingSystem, kSignal, kTransmitter};

// Service state, MCC, MNC, cell, third and fourth value, second and first channel, RSSI, RSRP,
// RSRQ, transmit power.
Bytes lte_record(const std::string& service_state, const std::string& transmit_power) {
  return hex(service_state) + hex("0100 0100 032D1A00 19 03 AD200000 FD660000 BD A0FF F7") +
         hex(transmit_power);
}

TEST_F(Network, LteDataComesFromThreeServicesOfTheModem) {
  expect_echoed(cdma(0x020000C0, {}, "123456"), 0, lte_record("02000000", "D3FFFFFF"),
                lte_data_texts(), kAllOfLte);
}

TEST_F(Network, LteDataWithoutAServiceStateIsOtherwiseComplete) {
  handset.inject("get_lte_service_state", "error error=7");
  expect_echoed(
      cdma(0x020000C0), 0, lte_record("00000000", "D3FFFFFF"),
      lte_data_texts() + Texts{"qor_qmi_sprint_get_lte_option: Get LTE service state failed (7)."},
      kAllOfLte);
}

TEST_F(Network, LteDataOfARadioThatDoesNotTransmitHasNoTransmitPower) {
  handset.inject("get_tx_rx_info", "error error=93");
  expect_echoed(
      cdma(0x020000C0), 0, lte_record("02000000", "00000000"),
      lte_data_texts() + Texts{"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (0), error (93)."},
      kAllOfLte);
}

TEST_F(Network, LteDataStopsAtTheFirstNasRequestThatFails) {
  Bytes request = cdma(0x020000C0);
  handset.inject("get_tx_rx_info", "error error=3");
  expect_echoed(
      request, 5, {},
      lte_data_texts() + Texts{"get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (0), error (3)."},
      kAllOfLte);
  handset.inject("get_sig_info", "error error=4");
  expect_echoed(
      request, 5, {},
      lte_data_texts() + Texts{"get_lte_data: QMI_NAS_GET_SIG_INFO failed (0), error (4)."},
      {kServiceState, kChannel, kServingSystem, kSignal});
  handset.inject("get_serving_system", "error error=5");
  expect_echoed(
      request, 5, {},
      lte_data_texts() + Texts{"get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (0), error (5)."},
      {kServiceState, kChannel, kServingSystem});
}

TEST_F(Network, LteChannelsThatTheModemDoesNotReportAreZero) {
  handset.inject("get_lte_channel", "error error=7");
  expect_echoed(cdma(0x020000C0), 0,
                hex("02000000 0100 0100 032D1A00 00 00 00000000 00000000 BD A0FF F7 "
                    "D3FFFFFF"),
                lte_data_texts() + Texts{"qor_qmi_sprint_get_lte_ul_dl_channel: failed (7)."},
                kAllOfLte);
}

const Texts kApnRequest = {vendor_request("get_active_ehrpd_apn")};
constexpr size_t kApnListSize = 1017;

TEST_F(Network, AccessPointsAreAListOfPackedRecords) {
  Bytes first = padded("internet.example", 103) + hex("03000000 C000020A") +
                hex("20010DB8 00000000 00000000 0000000A");
  Bytes second = padded("ims.example", 103) + hex("03000000 C000020B") +
                 hex("20010DB8 00000000 00000000 0000000B");
  Bytes list = hex("02") + first + second;
  list.resize(kApnListSize);
  expect_echoed(cdma(0x020000C1, {}, "123456"), 0, list, {}, kApnRequest);
}

TEST_F(Network, EightAccessPointsFillTheList) {
  std::string apns;
  Bytes list = hex("08");
  for (int i = 1; i <= 8; ++i) {
    std::string name(103, static_cast<char>('a' + i));
    apns += fmt::format(
        R"({}{{"name":"{}","first_value":{},"second_value":{},"remaining_bytes":"20010db8{:024x}"}})",
        i == 1 ? "" : ",", name, i, 0xC0000200U + static_cast<unsigned>(i), i);
    Bytes number = {static_cast<uint8_t>(i)};
    list = list + characters(name) + number + zeros(3) + hex("C00002") + number +
           hex("20010DB8 00000000 00000000 000000") + number;
  }
  handset.modem().command("set ehrpd_apns=[" + apns + "]");
  expect_echoed(cdma(0x020000C1), 0, list, {}, kApnRequest);
}

TEST_F(Network, WithoutAccessPointsTheCountIsZero) {
  handset.modem().command("set ehrpd_apns=[]");
  expect_echoed(cdma(0x020000C1), 0, zeros(kApnListSize), {}, kApnRequest);
}

TEST_F(Network, TheTotOrderIsUpdatedAndReadBack) {
  Bytes entries = words({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFFFFFFFF});
  expect_echoed(cdma(0x020000C5, le16(15) + entries), 0, {},
                {"handle_update_tot_order: EVENT VALUE 33554629 ", "Update TOT order result - 1"},
                {vendor_request("update_tot_order",
                                R"({"entries":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,4294967295]})")});
  expect_echoed(cdma(0x020000C4), 0, le16(15) + entries, {}, {vendor_request("get_tot_order")});
}

TEST_F(Network, AShorterTotOrderHasOnlyItsOwnEntries) {
  Bytes written = cdma(0x020000C5, le16(2) + words({7, 8, 9, 10}) + zeros(44));
  expect_echoed(written, 0, {},
                {"handle_update_tot_order: EVENT VALUE 33554629 ", "Update TOT order result - 1"},
                {vendor_request("update_tot_order", R"({"entries":[7,8]})")});
  expect_echoed(cdma(0x020000C4), 0, le16(2) + words({7, 8}) + zeros(52), {},
                {vendor_request("get_tot_order")});
}

TEST_F(Network, ATotOrderOfMoreThan15EntriesIsRefusedWithoutTheModem) {
  expect_echoed(cdma(0x020000C5, le16(16) + zeros(64)), 5, {},
                {"handle_update_tot_order: EVENT VALUE 33554629 ", "Update TOT order result - 0"},
                {});
}

TEST_F(Network, UpdatingATotOrderThatTheModemRefusesFails) {
  handset.inject("update_tot_order", "error error=48");
  expect_echoed(cdma(0x020000C5, le16(1) + words({7}) + zeros(56)), 5, {},
                {"handle_update_tot_order: EVENT VALUE 33554629 ",
                 "qor_qmi_sprint_update_tot_order: Update TOT order failed (48).",
                 "Update TOT order result - 0"},
                {vendor_request("update_tot_order", R"({"entries":[7]})")});
}

Texts subsidy_lock(const std::string& outcome) {
  return {"Enter qorext_hook_sprint_check_subsidy_lock_passwd() ",
          "qorext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK 3 ", outcome};
}

TEST_F(Network, TheSubsidyLockOpensWithItsCode) {
  expect_served(cdma(0x0200000A, {}, "246810"), reply(0x0200000A, 0, zeros(6)),
                subsidy_lock(" qorext_hook_sprint_verify_subsidy_lock Success "),
                {modem_request("dms", "verify_subsidy_lock", R"({"code":"323436383130"})")});
}

TEST_F(Network, TheSubsidyLockUsesOnlyTheCodeInTheHeader) {
  expect_served(cdma(0x0200000A, characters("246810"), "246811"), reply(0x0200000A, 3, zeros(6)),
                subsidy_lock(" qorext_hook_sprint_verify_subsidy_lock Error = 85"),
                {modem_request("dms", "verify_subsidy_lock", R"({"code":"323436383131"})")});
}

const std::string kAkey = "12345678901234567890123456";

Texts akey_texts() {
  return {"qorext_hook_sprint_write_akey:  ENTER ",
          "qcril_qmi_nas_qor_cdma_validate_and_write_akey entered "};
}

std::string akey_request(const Bytes& code, const Bytes& akey) {
  return modem_request("nas", "write_akey",
                       fmt::format(R"({{"akey":"{}","spc":"{}"}})", as_hex(akey), as_hex(code)));
}

TEST_F(Network, AnAkeyOf26CharactersGetsTwoReplies) {
  expect_served_twice(cdma(0x02000013, characters(kAkey), "000000"), 0, akey_texts(),
                      {akey_request(characters("000000"), characters(kAkey))});
  EXPECT_EQ(stored("security/akey"), kAkey);
}

TEST_F(Network, AnAkeyOfAnotherLengthIsRefusedWithoutTheModem) {
  for (const std::string& akey : {kAkey.substr(1), kAkey + "7", std::string()}) {
    expect_served_twice(cdma(0x02000013, characters(akey), "000000"), 5,
                        akey_texts() + Texts{"akey_len != sizeof(akey_req_msg.akey)"}, {});
  }
}

TEST_F(Network, AnAkeyWithTheWrongCodeFails) {
  expect_served_twice(cdma(0x02000013, characters(kAkey), "000001"), 5,
                      akey_texts() + Texts{"validate_and_write_akey Error = 85"},
                      {akey_request(characters("000001"), characters(kAkey))});
}

TEST_F(Network, AnAkeyThatClaimsMoreThanWasSentEndsInZeros) {
  expect_served_twice(cdma_claiming(0x02000013, 26, characters("12345"), "000000"), 5,
                      akey_texts() + Texts{"validate_and_write_akey Error = 48"},
                      {akey_request(characters("000000"), padded("12345", 26))});
}

}  // namespace
}  // namespace e2e
