// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace access_codes_test {

const std::string kCode = "123456";
const std::string kNewCode = "654321";
const std::string kAkey = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

const uint8_t* bytes_of(const std::string& characters) {
  return reinterpret_cast<const uint8_t*>(characters.data());
}

// Codes and keys may hold any byte.
std::string characters(const std::string& digits) {
  Bytes bytes = from_hex(digits);
  return {bytes.begin(), bytes.end()};
}
const std::string kRawCode = characters("00 32 00 34 35 FF");
const std::string kRawNewCode = characters("36 00 34 00 00 31");
const std::string kRawAkey =
    characters("00 4243 00 45464748494A4B4C4D4E4F505152535455 56 FF 5859 00");

int write_akey() {
  return qcril_qmi_nas_qor_cdma_validate_and_write_akey(bytes_of(kCode), bytes_of(kAkey), 26);
}
int write_spc() { return qor_qmi_sprint_write_spc(bytes_of(kCode), bytes_of(kNewCode)); }
int verify_lock() { return verify_subsidy_lock(bytes_of(kCode)); }

int write_raw_akey() {
  return qcril_qmi_nas_qor_cdma_validate_and_write_akey(bytes_of(kRawCode), bytes_of(kRawAkey), 26);
}
int write_raw_spc() { return qor_qmi_sprint_write_spc(bytes_of(kRawCode), bytes_of(kRawNewCode)); }
int verify_raw_lock() { return verify_subsidy_lock(bytes_of(kRawCode)); }

struct Exchanged : NamedRow {
  int (*call)();
  const char* service;
  unsigned int message;
  std::string request;
  int rc;
  Bytes answer;
  int result;
  Lines first_lines;
  const char* last_line;  // nullptr: none
};

const Bytes kRefused = le32(1) + le32(39);
const Bytes kRefusedOtherwise = le32(0xFFFFFFFF) + le32(39);

const Lines kAkeyLines = {"log: qcril_qmi_nas_qor_cdma_validate_and_write_akey entered ",
                          "send nas 0x5b"};
const Lines kSpcLines = {"log: qor_qmi_sprint_write_spc entered ", "send dms 0x52"};
const Lines kLockLines = {"send dms 0x3b"};

const char kAkeyNotSent[] = "validate_and_write_akey: qmi_client_send_msg_sync failed (-3).";
// Two operations log this text.
const char kSpcNotSent[] = "qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (-3).";
const char kLockMatches[] = " qorext_hook_sprint_verify_subsidy_lock Success ";
const char kLockRefused[] = " qorext_hook_sprint_verify_subsidy_lock Error = 39";

// clang-format off
const Exchanged kRows[] = {
    {"Akey",        write_akey,  "nas", 0x5B, kCode + kAkey,    0,  {},       1, kAkeyLines, nullptr},
    {"AkeyRefused", write_akey,  "nas", 0x5B, kCode + kAkey,    0,  kRefused, 0, kAkeyLines, "validate_and_write_akey Error = 39"},
    {"AkeyNotSent", write_akey,  "nas", 0x5B, kCode + kAkey,    -3, {},       0, kAkeyLines, kAkeyNotSent},
    {"AkeyRefusedOtherwise", write_akey, "nas", 0x5B, kCode + kAkey, 0, kRefusedOtherwise, 0, kAkeyLines, "validate_and_write_akey Error = 39"},
    {"SpcRefusedOtherwise",  write_spc,  "dms", 0x52, kCode + kNewCode, 0, kRefusedOtherwise, 0, kSpcLines, "qor_qmi_sprint_write_spc Error = 39"},
    {"LockRefusedOtherwise", verify_lock, "dms", 0x3B, kCode, 0, kRefusedOtherwise, 0, kLockLines, kLockRefused},
    {"RawAkey",     write_raw_akey, "nas", 0x5B, kRawCode + kRawAkey, 0, {}, 1, kAkeyLines, nullptr},
    {"RawSpc",      write_raw_spc, "dms", 0x52, kRawCode + kRawNewCode, 0, {}, 1, kSpcLines, nullptr},
    {"RawLock",     verify_raw_lock, "dms", 0x3B, kRawCode, 0, {}, 1, kLockLines, kLockMatches},
    {"Spc",         write_spc,   "dms", 0x52, kCode + kNewCode, 0,  {},       1, kSpcLines, nullptr},
    {"SpcRefused",  write_spc,   "dms", 0x52, kCode + kNewCode, 0,  kRefused, 0, kSpcLines, "qor_qmi_sprint_write_spc Error = 39"},
    {"SpcNotSent",  write_spc,   "dms", 0x52, kCode + kNewCode, -3, {},       0, kSpcLines, kSpcNotSent},
    {"Lock",        verify_lock, "dms", 0x3B, kCode,            0,  {},       1, kLockLines, kLockMatches},
    {"LockRefused", verify_lock, "dms", 0x3B, kCode,            0,  kRefused, 0, kLockLines, kLockRefused},
    {"LockNotSent", verify_lock, "dms", 0x3B, kCode,            -3, {},       0, kLockLines, kSpcNotSent},
};
// clang-format on

class AccessCode : public CarrierPhone, public testing::WithParamInterface<Exchanged> {};

TEST_P(AccessCode, IsExchangedAndItsResultIsChecked) {
  const Exchanged& row = GetParam();
  answer(row.message, row.answer);
  fail_send(row.message, row.rc);
  EXPECT_EQ(row.call(), row.result);
  Lines lines = row.first_lines;
  if (row.last_line != nullptr) lines.push_back(std::string("log: ") + row.last_line);
  EXPECT_THAT(trace, ElementsAreArray(lines));

  ASSERT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].service, row.service);
  EXPECT_EQ(exchanges[0].request, text(row.request));
  EXPECT_EQ(exchanges[0].response_length, 8u);
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
}

INSTANTIATE_TEST_SUITE_P(Of, AccessCode, testing::ValuesIn(kRows), kNameOfRow);

class AkeyLength : public CarrierPhone, public testing::WithParamInterface<int32_t> {};

TEST_P(AkeyLength, OtherThan26IsRefusedWithoutAMessage) {
  EXPECT_EQ(
      qcril_qmi_nas_qor_cdma_validate_and_write_akey(bytes_of(kCode), bytes_of(kAkey), GetParam()),
      0);
  EXPECT_THAT(trace, ElementsAre("log: qcril_qmi_nas_qor_cdma_validate_and_write_akey entered ",
                                 "log: akey_len != sizeof(akey_req_msg.akey)"));
}

INSTANTIATE_TEST_SUITE_P(Of, AkeyLength, testing::Values(25, 27, 0, -1, 26 + 256));

}  // namespace access_codes_test
