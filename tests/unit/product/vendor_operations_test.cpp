// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace vendor_operations_test {

struct Operation : NamedRow {  // by its name in the log
  unsigned int message;
  int64_t (*call)();
  Bytes request;
  unsigned int response_length;
  Lines first_lines;
};

const Bytes kSegment = numbered(5);
const Bytes kOrder = le16(2) + Bytes(6) + numbered(60);

int64_t reset() { return qor_qmi_sprint_fatory_reset(0xFE); }
int64_t set_list() { return qor_qmi_sprint_set_roaming_list_segment(5, kSegment.data()); }
int64_t get_timer() { return qor_qmi_sprint_get_bsr_timer(); }
int64_t set_timer() { return qor_qmi_sprint_set_bsr_timer(0x01020304); }
int64_t get_apns() {
  ActiveApnResponse list;
  memset(&list, 0xEE, sizeof list);
  return qor_qmi_sprint_get_active_ehrpd_apn(&list);
}
int64_t get_tot() { return qor_qmi_sprint_get_tot_order().count; }
int64_t update_tot() {
  TotOrderRequest order;
  memcpy(&order, kOrder.data(), sizeof order);
  return qor_qmi_sprint_update_tot_order(order);
}
int64_t read_band() { return qor_qmi_sprint_read_band(0x01020304); }
int64_t write_band() { return qor_qmi_sprint_write_band(0x01020304, 0x05060708); }
int64_t switch_profile() { return qor_qmi_sprint_switch_proflie(0x01020304); }
int64_t get_engineering() {
  uint8_t output[1000] = {};
  uint32_t length = 0;
  return qor_qmi_sprint_get_engineering_info(1, output, &length);
}
int64_t get_channel() {
  uint32_t first = 0;
  uint32_t second = 0;
  uint8_t third = 0;
  uint8_t fourth = 0;
  qor_qmi_sprint_get_lte_ul_dl_channel(&first, &second, &third, &fourth);
  return first;
}

const Lines kListLine = {"log: qor_qmi_sprint_set_roaming_list_segment: data_length (5)."};
const Lines kTypeLine = {"log: In Engineering info request 1"};
const Bytes kWord = from_hex("04030201");

// clang-format off
const Operation kOperations[] = {
    {"fatory_reset", 0x11,  reset,           {0xFE}, 1, {}},
    {"set_roaming_list_segment", 0x100, set_list,        le32(5) + kSegment + Bytes(16379), 4, kListLine},
    {"get_engineering_info", 0x10,  get_engineering, le32(1), 1012, kTypeLine},
    {"get_bsr_timer", 0x108, get_timer,       {}, 12, {}},
    {"set_bsr_timer", 0x109, set_timer,       kWord, 8, {}},
    {"get_lte_ul_dl_channel", 0x10A, get_channel,     {}, 20, {}},
    {"get_active_ehrpd_apn", 0x106, get_apns,        {}, 1168, {}},
    {"get_tot_order", 0x104, get_tot,         {}, 80, {}},
    {"update_tot_order", 0x105, update_tot,      kOrder, 8, {}},
    {"read_band", 0x101, read_band,       kWord, 8, {}},
    {"write_band", 0x102, write_band,      kWord + from_hex("08070605"), 4, {}},
    {"switch_proflie", 0x103, switch_profile,  kWord, 4, {}},
};
// clang-format on

class VendorRequest : public CarrierPhone, public testing::WithParamInterface<Operation> {};

TEST_P(VendorRequest, IsOneExchangeOfItsSizes) {
  GetParam().call();
  ASSERT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].service, "vendor");
  EXPECT_EQ(exchanges[0].id, GetParam().message);
  EXPECT_EQ(hex(exchanges[0].request), hex(GetParam().request));
  EXPECT_EQ(exchanges[0].response_length, GetParam().response_length);
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
}

INSTANTIATE_TEST_SUITE_P(Of, VendorRequest, testing::ValuesIn(kOperations), kNameOfRow);

// The result of each response; status and outcome words are tried for every message.
struct Verdict : NamedRow {
  int64_t (*call)();
  int rc;
  Bytes response;
  int64_t result;
  const char* error_line;  // after the operation's name; nullptr: none
};

const char kNotSent[] = "qmi_client_send_msg_sync failed (-3).";

const Bytes kZero = le32(0) + le32(9);  // the result word, then an error code or a value
const Bytes kOne = le32(1) + le32(9);
const Bytes kTwo = le32(2) + le32(9);
const Bytes kTimer = le32(33);
const Bytes kText = le32(3) + text("abc");
const Bytes kChannel = from_hex("0000 0000 01 00 3412");
const Bytes kCount = Bytes(4) + le16(3);

// clang-format off
const Verdict kVerdicts[] = {
    {"ResetOne",            reset, 0, {1}, 1, nullptr},
    {"ResetZero",           reset, 0, {0}, 0, "qmi_client_send_msg_sync failed (0), result (0)."},
    {"ResetTwo",            reset, 0, {2}, 0, "qmi_client_send_msg_sync failed (0), result (2)."},
    {"ResetFF",             reset, 0, {255}, 0, "qmi_client_send_msg_sync failed (0), result (255)."},
    {"ResetNotSent",        reset, -3, {1}, 0, "qmi_client_send_msg_sync failed (-3), result (1)."},
    {"ListZero",            set_list, 0, kZero, 1, nullptr},
    {"ListOne",             set_list, 0, kOne, 0, nullptr},
    {"ListNotSent",         set_list, -3, kZero, 0, kNotSent},
    {"EngineeringOne",      get_engineering, 0, kOne + kText, 0, "Get Engineer info failed (1)."},
    {"ListTwo",             set_list, 0, kTwo, 0, nullptr},
    {"EngineeringTwo",      get_engineering, 0, kTwo + kText, 0, "Get Engineer info failed (2)."},
    {"ReadBandTwo",         read_band, 0, kTwo, 0, "Read Band failed."},
    {"WriteBandTwo",        write_band, 0, kTwo, 0, "Read Band failed."},
    {"ProfileTwo",          switch_profile, 0, kTwo, 0, "failed."},
    {"UpdateTwo",           update_tot, 0, kTwo, 0, "Update TOT order failed (9)."},
    {"ChannelTwo",          get_channel, 0, kTwo + kChannel, 0, "failed (9)."},
    {"EngineeringNotSent",  get_engineering, -3, kZero + kText, 0, kNotSent},
    {"TimerOne",            get_timer, 0, kOne + kTimer, 33, nullptr},
    {"TimerOneOfZero",      get_timer, 0, kOne + le32(0), 0, nullptr},
    {"TimerZero",           get_timer, 0, kZero + kTimer, 0, "Get BSR timer failed (9)."},
    {"TimerTwo",            get_timer, 0, kTwo + kTimer, 0, "Get BSR timer failed (9)."},
    {"TimerNotSent",        get_timer, -3, kOne + kTimer, 0, kNotSent},
    {"SetTimerOne",         set_timer, 0, kOne, 1, nullptr},
    {"SetTimerZero",        set_timer, 0, kZero, 0, "Set BSR timer failed (9)."},
    {"SetTimerTwo",         set_timer, 0, kTwo, 0, "Set BSR timer failed (9)."},
    {"SetTimerNotSent",     set_timer, -3, kOne, 0, kNotSent},
    {"ChannelOne",          get_channel, 0, kOne + kChannel, 0x1234, nullptr},
    {"ChannelZero",         get_channel, 0, kZero + kChannel, 0, "failed (9)."},
    {"ChannelNotSent",      get_channel, -3, kOne + kChannel, 0, kNotSent},
    {"ApnsZero",            get_apns, 0, kZero, 0, nullptr},
    {"ApnsOne",             get_apns, 0, kOne, 0, nullptr},
    {"ApnsNotSent",         get_apns, -3, kZero, -3, kNotSent},
    {"TotZero",             get_tot, 0, kZero + kCount, 3, nullptr},
    {"TotOne",              get_tot, 0, kOne + kCount, 3, nullptr},
    {"TotNotSent",          get_tot, -3, kZero + kCount, 3, kNotSent},
    {"UpdateOne",           update_tot, 0, kOne, 1, nullptr},
    {"UpdateZero",          update_tot, 0, kZero, 0, "Update TOT order failed (9)."},
    {"UpdateNotSent",       update_tot, -3, kOne, 0, kNotSent},
    {"ReadBandZero",        read_band, 0, kZero, 9, nullptr},
    {"ReadBandOne",         read_band, 0, kOne, 0, "Read Band failed."},
    {"ReadBandNotSent",     read_band, -3, kZero, 0, kNotSent},
    {"WriteBandZero",       write_band, 0, kZero, 1, nullptr},
    {"WriteBandOne",        write_band, 0, kOne, 0, "Read Band failed."},
    {"WriteBandNotSent",    write_band, -3, kZero, 0, kNotSent},
    {"ProfileZero",         switch_profile, 0, kZero, 1, nullptr},
    {"ProfileOne",          switch_profile, 0, kOne, 0, "failed."},
    {"ProfileNotSent",      switch_profile, -3, kZero, 0, kNotSent},
};
// clang-format on

class VendorVerdict : public CarrierPhone, public testing::WithParamInterface<Verdict> {};

TEST_P(VendorVerdict, IsReturnedAndLogged) {
  const Verdict& verdict = GetParam();
  auto operation = std::find_if(std::begin(kOperations), std::end(kOperations),
                                [&](const Operation& row) { return row.call == verdict.call; });
  answer(operation->message, verdict.response);
  fail_send(operation->message, verdict.rc);
  EXPECT_EQ(verdict.call(), verdict.result);

  char send[32];
  snprintf(send, sizeof send, "send vendor 0x%x", operation->message);
  Lines expected = operation->first_lines + Lines{send};
  if (verdict.error_line != nullptr) {
    expected.push_back(std::string("log: qor_qmi_sprint_") + operation->name + ": " +
                       verdict.error_line);
  }
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(Of, VendorVerdict, testing::ValuesIn(kVerdicts), kNameOfRow);

class VendorOperations : public CarrierPhone {};

TEST_F(VendorOperations, RoamingListOf20000BytesIsSentAs16384) {
  Bytes segment = numbered(20000);
  EXPECT_EQ(qor_qmi_sprint_set_roaming_list_segment(20000, segment.data()), 1);
  segment.resize(16384);
  EXPECT_EQ(exchanges[0].request, le32(16384) + segment);
  EXPECT_EQ(trace[0], "log: qor_qmi_sprint_set_roaming_list_segment: data_length (20000).");
}

TEST_F(VendorOperations, RoamingListOf16384BytesIsNotCut) {
  Bytes segment = numbered(16384);
  qor_qmi_sprint_set_roaming_list_segment(16384, segment.data());
  EXPECT_EQ(exchanges[0].request, le32(16384) + segment);
}

TEST_F(VendorOperations, EngineeringInfoNeedsBufferAndLength) {
  uint8_t output = 0;
  uint32_t length = 0;
  EXPECT_EQ(qor_qmi_sprint_get_engineering_info(0, nullptr, &length), 0);
  EXPECT_EQ(qor_qmi_sprint_get_engineering_info(0, &output, nullptr), 0);
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(VendorOperations, EngineeringInfoTypeIsSentWith32Bits) {
  uint8_t output[1000] = {};
  uint32_t length = 0;
  qor_qmi_sprint_get_engineering_info(-2, output, &length);
  EXPECT_EQ(exchanges.at(0).request, from_hex("FEFFFFFF"));
  EXPECT_EQ(trace[0], "log: In Engineering info request -2");
}

TEST_F(VendorOperations, EngineeringInfoCopiesTheStatedBytes) {
  answer(0x10, le32(0) + le32(0xEEEEEEEE) + le32(3) + from_hex("61 00 63 64"));
  uint8_t output[1000] = {};
  uint32_t length = 99;
  EXPECT_EQ(qor_qmi_sprint_get_engineering_info(0, output, &length), 1);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(hex({output, 5}), "61 00 63 0000"_hex);
  EXPECT_THAT(trace, ElementsAre("log: In Engineering info request 0", "send vendor 0x10",
                                 "log: Successfully retrieved datalen 3"));
}

TEST_F(VendorOperations, EngineeringInfoBeyondItsTextCopiesTheText) {
  answer(0x10, le32(0) + le32(0) + le32(2000) + Bytes(1000, 'a'));
  Bytes output(1001, 0xEE);
  uint32_t length = 0;
  EXPECT_EQ(qor_qmi_sprint_get_engineering_info(0, output.data(), &length), 1);
  EXPECT_EQ(length, 2000u);
  EXPECT_EQ(output, Bytes(1000, 'a') + Bytes{0xEE});
}

TEST_F(VendorOperations, RefusedEngineeringInfoDoesNotChangeTheOutput) {
  answer(0x10, le32(1) + le32(0) + le32(3) + text("abc"));
  uint8_t output[3] = {7, 7, 7};
  uint32_t length = 99;
  qor_qmi_sprint_get_engineering_info(0, output, &length);
  EXPECT_EQ(length, 99u);
  EXPECT_EQ(hex(output), "070707");
}

// The four outputs of the channel query, each with its validity byte.
class LteChannel : public CarrierPhone {
 protected:
  uint32_t first = 91;
  uint32_t second = 92;
  uint8_t third = 93;
  uint8_t fourth = 94;

  void get(const std::string& values) {
    answer(0x10A, le32(1) + le32(0) + from_hex(values));
    qor_qmi_sprint_get_lte_ul_dl_channel(&first, &second, &third, &fourth);
  }
  std::vector<uint32_t> outputs() const { return {first, second, third, fourth}; }
};

TEST_F(LteChannel, EachValueIsStoredInItsOutput) {
  get("01EE 0102 02EE 0304 0305 0406");
  EXPECT_THAT(outputs(), ElementsAre(0x0403u, 0x0201u, 5u, 6u));
}

TEST_F(LteChannel, ValuesAreExtendedWithZeros) {
  get("0100 FFFF 0100 FEFF 01FF 01FE");
  EXPECT_THAT(outputs(), ElementsAre(0xFFFEu, 0xFFFFu, 0xFFu, 0xFEu));
}

TEST_F(LteChannel, ValuesWithoutValidityChangeNoOutput) {
  get("0000 0102 0000 0304 0005 0006");
  EXPECT_THAT(outputs(), ElementsAre(91u, 92u, 93u, 94u));
}

TEST_F(LteChannel, EachValueHasItsOwnValidity) {
  get("0000 0102 0100 0304 0005 0006");
  EXPECT_THAT(outputs(), ElementsAre(0x0403u, 92u, 93u, 94u));
  get("0100 0102 0000 0708 0005 0006");
  EXPECT_THAT(outputs(), ElementsAre(0x0403u, 0x0201u, 93u, 94u));
  get("0000 0708 0000 0708 0105 0006");
  EXPECT_THAT(outputs(), ElementsAre(0x0403u, 0x0201u, 5u, 94u));
  get("0000 0708 0000 0708 0008 0106");
  EXPECT_THAT(outputs(), ElementsAre(0x0403u, 0x0201u, 5u, 6u));
}

TEST_F(LteChannel, NullOutputsAreSkipped) {
  answer(0x10A, le32(1) + le32(0) + from_hex("0100 0102 0100 0304 0105 0106"));
  qor_qmi_sprint_get_lte_ul_dl_channel(nullptr, nullptr, nullptr, nullptr);
  EXPECT_THAT(trace, ElementsAre("send vendor 0x10a"));
}

TEST_F(VendorOperations, NullApnListIsRefused) {
  EXPECT_NE(qor_qmi_sprint_get_active_ehrpd_apn(nullptr), 0);
  EXPECT_THAT(trace, ElementsAre("log: qor_qmi_sprint_get_active_ehrpd_apn: NULL point"));
}

TEST_F(VendorOperations, ApnListIsReceivedInTheCallersBuffer) {
  Bytes list = numbered(1168);
  answer(0x106, list);
  ActiveApnResponse response;
  memset(&response, 0xEE, sizeof response);  // the fake modem checks that it is zeroed
  EXPECT_EQ(qor_qmi_sprint_get_active_ehrpd_apn(&response), 0);
  EXPECT_EQ(memcmp(&response, list.data(), list.size()), 0);
}

TEST_F(VendorOperations, TotOrderIsReturnedUnchanged) {
  Bytes order = numbered(80);
  answer(0x104, order);
  TotOrderResponse response = qor_qmi_sprint_get_tot_order();
  EXPECT_EQ(memcmp(&response, order.data(), order.size()), 0);
}

}  // namespace vendor_operations_test
