// SPDX-License-Identifier: Apache-2.0
// Reading and programming the number assignment module.
#include "tests/e2e/support/nam_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

TEST_F(NamProgramming, TheRecordIsReadFromFifteenItems) {
  Record expected = kFactory;
  expected.mdn = "913555014200000";  // the item's unused positions are zero digits
  EXPECT_EQ(get(), as_hex(reply(kNamGet, 0, record_bytes(expected))));
  EXPECT_THAT(handset.modem_requests(),
              ElementsAre(element_read(8), element_read(25), element_read(26), element_read(21),
                          element_read(22), element_read(15), element_read(36), element_read(16),
                          element_read(17), element_read(29), element_read(31), element_read(30),
                          element_read(20), element_read(18), element_read(2)));
}

TEST_F(NamProgramming, TheRecordIsLoggedValueByValue) {
  Served served = handset.serve(cdma(kNamGet));
  Texts values;
  for (const std::string& text : served.log) {
    if (text.find("GET NAM VALUE") != std::string::npos) values.push_back(text);
  }
  const std::string value = "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE ";
  EXPECT_THAT(
      values,
      ElementsAre(value + "MDN  913555014200000 ", value + "MIN1  7284767 ", value + "MIN2  802 ",
                  value + "IMSI_T_S1  7284767 ", value + "IMSI_T_S2  802 ",
                  value + "SID NID  4700 ", value + "SCM  42 ", value + "IMSI_11_12  99 ",
                  value + "IMSI_MCC 209 ", value + "P_CHANNEL_A 283 P_CHANNEL_B 384 ",
                  value + "S_CHANNEL_A 691 S_CHANNEL_B 777 ", value + "VOCODER 68 ",
                  value + "IMSI_MCC_T 209 ", value + "IMSI_T_11_12 99 ",
                  value + "OVERLOAD CLASS 2 "));
  EXPECT_THAT(served.log,
              Contains("qorext_hook_sprint_get_nam_info: NAM INFO imsiT => 310009135550142 "));
}

TEST_F(NamProgramming, AProgrammedRecordIsReadBackFieldByField) {
  Bytes request = setting(kProgrammed, "000000", "000000");
  expect_echoed(request, 0);
  EXPECT_EQ(get(), as_hex(reply(kNamGet, 0, record_bytes(kProgrammed))));
}

TEST_F(NamProgramming, EveryItemIsWrittenInTheOverTheAirEncoding) {
  handset.serve(setting(kProgrammed, "000000", "000000"));
  Bytes pairs = hex("00 3412 FFFF") + zeros(76);
  EXPECT_THAT(
      written(),
      ElementsAre(
          element_write(8, hex("00 0F 020A060A070A080A090A0102030405")),
          element_write(25, hex("0000000000 DD63F200")), element_write(26, hex("000000 C300")),
          element_write(21, hex("0000000000 155F5600")), element_write(22, hex("000000 0C00")),
          element_write(15, pairs), element_write(36, hex("6A")), element_write(16, hex("00 08")),
          element_write(17, hex("00 C400")), element_write(29, hex("00 5802 5902")),
          element_write(31, hex("00 5A02 5B02")), element_write(30, hex("00000000 1C80 0000")),
          element_write(20, hex("00 6701")), element_write(18, hex("00 5C")),
          element_write(2, hex("0000 09"))));
}

TEST_F(NamProgramming, OtherBytesOfTheItemsAreUnchanged) {
  for (int item : {25, 21}) handset.modem().command(fmt::format("nv {} ffffffffffffffffff", item));
  for (int item : {26, 22}) handset.modem().command(fmt::format("nv {} ffffffffff", item));
  handset.modem().command("nv 15 " + as_hex(Bytes(81, 0xEE)));
  handset.modem().command("nv 30 ffffffffffffffff");
  handset.modem().command("nv 2 ffffff");
  handset.serve(setting(kFactory, "000000", "000000"));
  EXPECT_EQ(stored_item(25), "00ffffffff1f286f00");
  EXPECT_EQ(stored_item(26), "00ffff2203");
  EXPECT_EQ(stored_item(21), "00ffffffff1f286f00");
  EXPECT_EQ(stored_item(22), "00ffff2203");
  EXPECT_EQ(stored_item(15), "005c120c00" + as_hex(Bytes(76, 0xEE)));
  EXPECT_EQ(stored_item(30), "ffffffff4400ffff");
  EXPECT_EQ(stored_item(2), "00ff02");
}

TEST_F(NamProgramming, AnUnknownVocoderIsWrittenAsTheFirstOne) {
  Record record = kFactory;
  record.vocoder = 7;
  handset.serve(setting(record, "000000", "000000"));
  EXPECT_EQ(stored_item(30), "0000000000800000");
  handset.modem().command("nv 30 0000000005000000");
  record.mdn = "913555014200000";
  record.vocoder = 0xFFFFFFFF;
  EXPECT_EQ(get(), as_hex(reply(kNamGet, 0, record_bytes(record))));
}

TEST_F(NamProgramming, EveryVocoderCodeIsReadBack) {
  Record record = kProgrammed;
  for (record.vocoder = 0; record.vocoder <= 6; ++record.vocoder) {
    handset.serve(setting(record, "000000", "000000"));
    EXPECT_EQ(get(), as_hex(reply(kNamGet, 0, record_bytes(record))));
  }
}

TEST_F(NamProgramming, ANumberOfAllZerosIsReadBack) {
  Record record = kProgrammed;
  record.mdn = "000000000000000";
  record.min = "0000000000";
  record.imsi_t = "000000000000000";
  record.mcc = record.mcc_t = "000";
  record.imsi_11_12 = "00";
  handset.serve(setting(record, "000000", "000000"));
  EXPECT_EQ(stored_item(26), "000000e703");
  EXPECT_EQ(get(), as_hex(reply(kNamGet, 0, record_bytes(record))));
}

}  // namespace
}  // namespace e2e
