// SPDX-License-Identifier: Apache-2.0
// Set NAM information: one record is written to fifteen items.
#include "src/carrier/nam.h"
#include "tests/unit/product/nam_phone.h"
#include "tests/unit/product/random_digits.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Not;
using testing::StartsWith;

namespace nam_write_test {

const std::string kSet = "qorext_hook_sprint_set_nam_info:  SET NAM ";
const std::string kBlock = "qorext_hook_sprint_set_nam_block_request_info:  ";
const std::string kMdn = "qorext_hook_sprint_set_mdn_to_nv:  ";

TEST_F(NamWrite, EveryItemIsWrittenInOrderAndKeepsTheBytesAroundItsValue) {
  EXPECT_EQ(set(), 0u);
  EXPECT_THAT(
      writes(),
      ElementsAre(Write{8, "00 0F 02 0A 06 05 05 05 0A 01 09 08 0A 0A 0A 0A 01"_hex},
                  Write{25, "00 A1A2A3A4 7B046F00"_hex}, Write{26, "00 B1B2 C300"_hex},
                  Write{21, "00 C1C2C3C4 80046F00"_hex}, Write{22, "00 D1D2 E303"_hex},
                  Write{15, "00 5710 FEFF"_hex + hex(numbered(76))}, Write{36, "2A"},
                  Write{16, "0025"}, Write{17, "00 C800"_hex}, Write{29, "00 1B01 8001"_hex},
                  Write{31, "00 B302 0903"_hex}, Write{30, "E0E1E2E3 1C80 E6E7"_hex},
                  Write{20, "00 D100"_hex}, Write{18, "0001"}, Write{2, "00 F1 07"_hex}));
}

TEST_F(NamWrite, SevenItemsAreReadBeforeTheyAreWritten) {
  set();
  std::vector<std::string> order;
  for (const Exchange& exchange : exchanges) {
    order.push_back((exchange.id == 8 ? "read " : "write ") +
                    std::to_string(load_le32(exchange.request.data())));
  }
  EXPECT_THAT(order,
              ElementsAre("write 8", "read 25", "write 25", "read 26", "write 26", "read 21",
                          "write 21", "read 22", "write 22", "read 15", "write 15", "write 36",
                          "write 16", "write 17", "write 29", "write 31", "read 30", "write 30",
                          "write 20", "write 18", "read 2", "write 2"));
}

TEST_F(NamWrite, EveryNamIndexIsWrittenAsZero) {
  for (uint32_t item : {25u, 26u, 21u, 22u, 15u, 2u}) items[item][0] = 0x99;
  set();
  for (const Write& write : writes()) {
    bool has_index = write.item != 36 && write.item != 30;
    EXPECT_TRUE(!has_index || write.data.rfind("00", 0) == 0) << write;
  }
}

TEST_F(NamWrite, EveryStepIsLogged) {
  set();
  auto done = [](uint32_t rc) {
    return numbered_line("qorext_hook_sprint_set_nam_item: WRITE NV VALUE ", rc);
  };
  auto write = [&](uint32_t id, const Bytes& data) { return write_lines(id, data) + done(0); };
  auto modify = [&](uint32_t id) {
    return read_lines(id, items[id]) +
           Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 0 "} + write(id, items[id]);
  };
  Lines digits;
  for (char digit : nam.mdn) {
    digits = digits + Lines{"log: " + kMdn + "mdn_number " + std::to_string(int{digit}) + " \n",
                            "log: qorext_hook_sprint_read_mdn_from_nv:  nv output " +
                                std::to_string(digit == '0' ? 10 : digit - '0') + " \n"};
  }
  Lines expected =
      Lines{"log: qorext_hook_sprint_handler: ENTER ",
            "log: qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE 33554434 ",
            "log: " + kSet + "INFO  0 ",
            "log: " + kSet + "IMSI_MCC  200 ",
            "log: " + kSet + "IMSI_11_12  37 ",
            "log: " + kSet + "MIN1 7275643 MIN2 195 ",
            "log: " + kSet + "MccT 209 imsiT11_12 1 imsiT_s1 7275648 imsiT_s2 995 ",
            "log: isSpcChanged = 0, (123456 ~ 123456)",
            "log: " + kSet + "SID 4183 NID 65534 ",
            "log: " + kSet + "pChannelA 283 pChannelB 384 sChannelA sChannelB ",
            "log: " + kSet + "sChannelA 691 sChannelB 777 sChannelA sChannelB ",
            "log: " + kSet + "SCM 42 ",
            "log: " + kSet + "Vocoder 32796 ",
            "log: " + kSet + "AccessOverload 7 ",
            "log: " + kBlock + "SET NAM BLOCK  0 ",
            "log: " + kMdn + "WRITE NV_DIR_NUMBER_PCS_I 0 "} +
      digits + write(8, items[8]) +
      Lines{"log: " + kMdn + "NV PCS WRITE COMPLETE 0 ",
            "log: " + kBlock + "SET NAM BLOCK MDN  0 "} +
      modify(25) + modify(26) + modify(21) + modify(22) + modify(15) + write(36, items[36]) +
      write(16, items[16]) + write(17, items[17]) + write(29, items[29]) + write(31, items[31]) +
      modify(30) + write(20, items[20]) + write(18, items[18]) + modify(2) +
      Lines{"log: " + kBlock + "SET NAM BLOCK NV ENTRY COMPLETE  0 "} +
      reply_lines(replies().at(0));
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

class NamWriteFailure : public NamWrite, public testing::WithParamInterface<size_t> {};

TEST_P(NamWriteFailure, LogsItsNumberAndDoesNotEndTheWrite) {
  unwritable = {kNamItems[GetParam()]};
  nam.new_spc = "654321";
  EXPECT_EQ(set(5), 0u);
  EXPECT_EQ(writes().size(), 15u);
  EXPECT_TRUE(is_code_changed());
  EXPECT_THAT(logs(), Contains("qorext_hook_sprint_set_nam_item: WRITE NV VALUE 4 ").Times(1));
  EXPECT_THAT(logs(), Contains(kBlock + "ERROR FOUND " + std::to_string(GetParam()) + " "));
}

INSTANTIATE_TEST_SUITE_P(OfItem, NamWriteFailure, testing::Range<size_t>(0, 15));

TEST_F(NamWrite, FirstFailureIsReported) {
  unwritable = {2, 36, 26};
  fail_send(0x52, -3);
  nam.new_spc = "654321";
  set(5);
  EXPECT_THAT(logs(), Contains(kBlock + "ERROR FOUND 2 "));
  EXPECT_THAT(logs(), Contains(StartsWith(kBlock + "ERROR FOUND")).Times(1));
}

TEST_F(NamWrite, FailedReadsAreOnlyLogged) {
  unreadable = {25, 26, 21, 22, 15, 30, 2};
  set();
  EXPECT_THAT(logs(), Contains("qorext_hook_sprint_get_nam_item: READ NV VALUE 4 ").Times(7));
  EXPECT_THAT(logs(), Not(Contains(StartsWith(kBlock + "ERROR FOUND"))));
  EXPECT_EQ(writes().size(), 15u);
}

TEST_F(NamWrite, NumberOf20DigitsWritesFifteen) {
  Bytes record = nam.record();
  Bytes number = text("12345678901234567890");
  std::copy(number.begin(), number.end(), record.begin());  // over the first digits of the MIN
  set_record(record);
  EXPECT_EQ(written(8), "00 0F 01 02 03 04 05 06 07 08 09 0A 01 02 03 04 05"_hex);
  EXPECT_THAT(logs(), Contains(StartsWith(kMdn + "mdn_number ")).Times(15));
}

TEST_F(NamWrite, NumbersCharactersAreLoggedWithoutASign) {
  nam.mdn = "\xFF";
  set();
  EXPECT_THAT(logs(), Contains(kMdn + "mdn_number 255 \n"));
  EXPECT_EQ(written(8), "00 01 CF"_hex + hex(Bytes(14)));
}

TEST_F(NamWrite, ShorterNumberIsWrittenWithItsCount) {
  nam.mdn = "507";
  set();
  EXPECT_EQ(written(8), "00 03 05 0A 07"_hex + hex(Bytes(12)));
  nam.mdn = "";
  set();
  EXPECT_EQ(written(8), hex(Bytes(17)));
}

TEST_F(NamWrite, NumberOfTenZerosIs999And999And10And999) {
  nam.min = "0000000000";
  set();
  EXPECT_EQ(written(26), "00 B1B2 E703"_hex);
  EXPECT_EQ(written(25), "00 A1A2A3A4"_hex + hex(le32((999 << 14) | (10 << 10) | 999)));
  EXPECT_THAT(logs(), Contains(kSet + "MIN1 16378855 MIN2 999 "));
}

TEST_F(NamWrite, VocoderCodesAreMapped) {
  const uint16_t kValues[] = {32768, 32770, 32796, 2, 9, 3, 68};
  for (uint32_t code = 0; code < 7; ++code) {
    nam.vocoder = code;
    set();
    EXPECT_EQ(written(30), "E0E1E2E3"_hex + hex(le16(kValues[code])) + "E6E7") << code;
    EXPECT_THAT(logs(), Contains(kSet + "Vocoder " + std::to_string(kValues[code]) + " "));
  }
}

TEST_F(NamWrite, OtherVocoderCodesWrite32768) {
  for (uint32_t code : {7u, 100u, 0xFFFFFFFFu}) {
    nam.vocoder = code;
    set();
    EXPECT_EQ(written(30), "E0E1E2E3 0080 E6E7"_hex) << code;
  }
}

TEST_F(NamWrite, NumbersAreCutToTheSizeOfTheirItems) {
  nam.sid = 0x12345678;
  nam.scm = 0x1FF;
  nam.primary_a = 0x00010002;
  nam.overload_class = 0x10A;
  set();
  EXPECT_EQ(written(15).substr(0, 6), "007856");
  EXPECT_EQ(written(36), "FF");
  EXPECT_EQ(written(29).substr(0, 6), "000200");
  EXPECT_EQ(written(2), "00F10A");
}

TEST_F(NamWrite, EveryRecordIsReadAsItWasSet) {
  RandomDigits random(20655501);
  for (int i = 0; i < 40; ++i) {
    nam.mdn = random.digits(15);
    nam.min = random.digits(10);
    nam.imsi_11_12 = random.digits(2);
    nam.mcc = random.digits(3);
    nam.imsi_t = random.digits(15);
    nam.mcc_t = nam.imsi_t.substr(0, 3);
    nam.vocoder = random.below(7);
    nam.sid = random.below(0x10000);
    set();
    for (const Write& write : writes()) items[write.item] = from_hex(write.data);

    Nam expected = nam;
    expected.new_spc.clear();
    offer(Request::cdma(0x02000001));
    ASSERT_THAT(replies(), ElementsAre(reply(0x02000001, 0, expected.record())));
  }
}

}  // namespace nam_write_test
