// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;

namespace lte_data_test {

// A response of `size` bytes: pieces at their offsets, zero elsewhere.
Bytes response(size_t size, const std::map<size_t, std::string>& pieces) {
  Bytes bytes(size);
  for (const auto& [offset, digits] : pieces) {
    Bytes piece = from_hex(digits);
    std::copy(piece.begin(), piece.end(), bytes.begin() + static_cast<ptrdiff_t>(offset));
  }
  return bytes;
}

class LteDataQuery : public CarrierPhone {
 protected:
  LteDataQuery() {
    answer(0x107, le32(1) + le32(0) + Bytes{0xB2});
    answer(0x10A, le32(1) + le32(0) + from_hex("0100 2322 0100 1312 0133 0144"));
    answer(0x24, response(1508, {{1104, "01 EE 5150 6160"}, {1434, "01 EE 74737271"}}));
    answer(0x4F, response(64, {{36, "01 EE 81 91 A2A1"}}));
    answer(0x5A, response(164, {{64, "01 EEEEEEEEEEEEEE C4C3C2C1"}}));
  }

  // The record; the caller had set every byte to 0xEE.
  std::string get(int expected_result = 1) {
    LteData data;
    memset(&data, 0xEE, sizeof data);
    trace.clear();
    EXPECT_EQ(qor_qmi_sprint_get_lte_data(&data), expected_result);
    auto bytes = reinterpret_cast<const uint8_t*>(&data);
    return hex({bytes, sizeof data});
  }
};

// The fields in their order: state, MCC, MNC, cell, third and fourth, second, first channel value,
// RSSI, RSRP, RSRQ, transmit power.
const std::string kState = "B2000000";
const std::string kPlmn = "51506160";
const std::string kCell = "74737271";
const std::string kChannels = "3344 23220000 13120000";
const std::string kSignal = "81 A2A1 91";
const std::string kPower = "C4C3C2C1";

std::string record(const std::string& fields) { return hex(from_hex(fields)); }
std::string callers(size_t bytes) { return hex(Bytes(bytes, 0xEE)); }

TEST_F(LteDataQuery, EveryFieldHasItsOffset) {
  EXPECT_EQ(get(), record(kState + kPlmn + kCell + kChannels + kSignal + kPower));
  EXPECT_THAT(trace,
              ElementsAre("log: qor_qmi_sprint_get_lte_data entered ", "send vendor 0x107",
                          "send vendor 0x10a", "send nas 0x24", "send nas 0x4f", "send nas 0x5a"));
}

TEST_F(LteDataQuery, RequestsAreEmptyButForTheRadioInterface) {
  get();
  ASSERT_EQ(exchanges.size(), 5u);
  const unsigned int kResponseLengths[] = {12, 20, 1508, 64, 164};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(exchanges[i].response_length, kResponseLengths[i]);
    EXPECT_EQ(exchanges[i].timeout_ms, 15000u);
    EXPECT_EQ(exchanges[i].request, i == 4 ? le32(8) : Bytes{});
  }
}

TEST_F(LteDataQuery, NullRecordIsRefused) {
  EXPECT_EQ(qor_qmi_sprint_get_lte_data(nullptr), 0);
  EXPECT_THAT(trace, ElementsAre("log: qor_qmi_sprint_get_lte_data entered ",
                                 "log: qor_qmi_sprint_get_lte_data: p_lte_data == NULL"));
}

TEST_F(LteDataQuery, RefusedServiceStateIsZeroAndTheRecordIsComplete) {
  for (uint32_t result : {0u, 2u}) {
    answer(0x107, le32(result) + le32(17) + Bytes{0xB2});
    EXPECT_EQ(get(), record("00000000" + kPlmn + kCell + kChannels + kSignal + kPower));
    EXPECT_THAT(
        trace, ElementsAre("log: qor_qmi_sprint_get_lte_data entered ", "send vendor 0x107",
                           "log: qor_qmi_sprint_get_lte_option: Get LTE service state failed (17).",
                           "send vendor 0x10a", "send nas 0x24", "send nas 0x4f", "send nas 0x5a"));
  }
}

TEST_F(LteDataQuery, FailedServiceStateIsZeroAndTheRecordIsComplete) {
  fail_send(0x107, -3);
  EXPECT_EQ(get(), record("00000000" + kPlmn + kCell + kChannels + kSignal + kPower));
  EXPECT_THAT(
      trace, ElementsAre(
                 "log: qor_qmi_sprint_get_lte_data entered ", "send vendor 0x107",
                 "log: qor_qmi_sprint_get_lte_service_state: qmi_client_send_msg_sync failed (-3).",
                 "send vendor 0x10a", "send nas 0x24", "send nas 0x4f", "send nas 0x5a"));
}

TEST_F(LteDataQuery, FieldsWithoutValidityKeepTheCallersValue) {
  answer(0x10A, le32(1) + le32(0) + from_hex("0000 2322 0000 1312 0033 0044"));
  answer(0x24, response(1508, {{1106, "5150 6160"}, {1436, "74737271"}}));
  answer(0x4F, response(64, {{38, "81 91 A2A1"}}));
  answer(0x5A, response(164, {{72, "C4C3C2C1"}}));
  EXPECT_EQ(get(), record(kState) + callers(26));
}

TEST_F(LteDataQuery, AnyNonZeroValidityByteCounts) {
  for (std::string valid : {"02", "80", "FF"}) {
    std::string channels = valid + "00 2322" + valid + "00 1312" + valid + "33" + valid + "44";
    answer(0x10A, le32(1) + le32(0) + from_hex(channels));
    answer(0x24, response(1508, {{1104, valid + "EE 5150 6160"}, {1434, valid + "EE 74737271"}}));
    answer(0x4F, response(64, {{36, valid + "EE 81 91 A2A1"}}));
    answer(0x5A, response(164, {{64, valid + "EEEEEEEEEEEEEE C4C3C2C1"}}));
    EXPECT_EQ(get(), record(kState + kPlmn + kCell + kChannels + kSignal + kPower)) << valid;
  }
}

TEST_F(LteDataQuery, FieldsOfTheServingSystemHaveTheirOwnValidity) {
  answer(0x24, response(1508, {{1104, "01 EE 5150 6160"}, {1436, "74737271"}}));
  EXPECT_EQ(get(), record(kState + kPlmn) + callers(4) + record(kChannels + kSignal + kPower));
  answer(0x24, response(1508, {{1106, "5150 6160"}, {1434, "01 EE 74737271"}}));
  EXPECT_EQ(get(), record(kState) + callers(4) + record(kCell + kChannels + kSignal + kPower));
}

TEST_F(LteDataQuery, FailedChannelQueryDoesNotEndTheQuery) {
  fail_send(0x10A, -3);
  EXPECT_EQ(get(), record(kState + kPlmn + kCell) + callers(10) + record(kSignal + kPower));
}

// The three NAS messages: a failure ends the query and keeps the fields before it.
struct Failing : NamedRow {
  unsigned int message;
  int rc;
  Bytes answer;
  int result;
  std::string record;
  const char* line;
};

const Bytes kRefused = le32(1) + le32(17);
const Bytes kRefusedOtherwise = le32(0xFFFFFFFF) + le32(17);
const Bytes kUnavailable = le32(1) + le32(93);
const Bytes kPowerAfterIt = Bytes(56) + from_hex("01 00000000000000 C4C3C2C1");

const std::string kNoPlmn = record(kState) + callers(8) + record(kChannels) + callers(8);
const std::string kNoSignal = record(kState + kPlmn + kCell + kChannels) + callers(8);
const std::string kNoPower = record(kState + kPlmn + kCell + kChannels + kSignal) + callers(4);
const std::string kZeroPower = record(kState + kPlmn + kCell + kChannels + kSignal + "00000000");
const std::string kWhole = record(kState + kPlmn + kCell + kChannels + kSignal + kPower);

// clang-format off
const Failing kFailing[] = {
    {"ServingSystemRefused", 0x24, 0,  kRefused, 0, kNoPlmn,   "SERVING_SYSTEM failed (0), error (17)."},
    {"ServingSystemRefusedOtherwise", 0x24, 0, kRefusedOtherwise, 0, kNoPlmn, "SERVING_SYSTEM failed (0), error (17)."},
    {"SignalRefusedOtherwise", 0x4F, 0, kRefusedOtherwise, 0, kNoSignal, "SIG_INFO failed (0), error (17)."},
    {"PowerRefusedOtherwise", 0x5A, 0, kRefusedOtherwise, 0, kNoPower, "TX_RX_INFO failed (0), error (17)."},
    {"ServingSystemNotSent", 0x24, -3, {},       0, kNoPlmn,   "SERVING_SYSTEM failed (-3), error (0)."},
    {"SignalRefused",        0x4F, 0,  kRefused, 0, kNoSignal, "SIG_INFO failed (0), error (17)."},
    {"SignalNotSent",        0x4F, -3, {},       0, kNoSignal, "SIG_INFO failed (-3), error (0)."},
    {"PowerRefused",         0x5A, 0,  kRefused + kPowerAfterIt, 0, kNoPower, "TX_RX_INFO failed (0), error (17)."},
    {"PowerNotSent",         0x5A, -3, {},       0, kNoPower,  "TX_RX_INFO failed (-3), error (0)."},
    {"PowerUnavailable",     0x5A, 0,  kUnavailable, 1, kZeroPower, "TX_RX_INFO failed (0), error (93)."},
    {"PowerUnavailableAndNotSent", 0x5A, -3, kUnavailable, 1, kZeroPower, "TX_RX_INFO failed (-3), error (93)."},
    {"PowerUnavailableButValid", 0x5A, 0, kUnavailable + kPowerAfterIt, 1, kWhole, "TX_RX_INFO failed (0), error (93)."},
};
// clang-format on

class LteDataFailure : public LteDataQuery, public testing::WithParamInterface<Failing> {};

TEST_P(LteDataFailure, KeepsTheFieldsBeforeIt) {
  answer(GetParam().message, GetParam().answer);
  fail_send(GetParam().message, GetParam().rc);
  EXPECT_EQ(get(GetParam().result), GetParam().record);
  Lines expected = {"log: qor_qmi_sprint_get_lte_data entered ",
                    "send vendor 0x107",
                    "send vendor 0x10a",
                    "send nas 0x24",
                    "send nas 0x4f",
                    "send nas 0x5a"};
  expected.resize(GetParam().message == 0x24 ? 4 : GetParam().message == 0x4F ? 5 : 6);
  expected.push_back(std::string("log: get_lte_data: QMI_NAS_GET_") + GetParam().line);
  EXPECT_EQ(trace, expected);
  EXPECT_EQ(exchanges.back().id, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Of, LteDataFailure, testing::ValuesIn(kFailing), kNameOfRow);

}  // namespace lte_data_test
