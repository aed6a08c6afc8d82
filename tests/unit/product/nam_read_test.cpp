// SPDX-License-Identifier: Apache-2.0
// Get NAM information: fifteen items are read into one record.
#include "src/carrier/nam.h"
#include "tests/unit/product/nam_phone.h"

using testing::Contains;
using testing::ElementsAreArray;
using testing::Not;
using testing::StartsWith;

namespace nam_read_test {

constexpr uint32_t kGetNam = 0x02000001;
const std::string kBlock = "qorext_hook_sprint_get_nam_block_request_info:  ";
const std::string kInfo = "qorext_hook_sprint_get_nam_info: NAM INFO ";
const std::string kMdn = "qorext_hook_sprint_read_mdn_from_nv:  ";

class NamRead : public NamPhone {
 protected:
  // The data of the get reply.
  std::string get(uint32_t status = 0) {
    offer(Request::cdma(kGetNam).with_code("ABCDEF"));
    std::string frame = replies().at(0);
    EXPECT_EQ(frame.substr(0, 36), hex(le32(kGetNam) + le32(104) + le32(status) + Bytes(6)));
    EXPECT_EQ(frame.size(), 2u * 124);
    return frame.substr(36, 208);
  }
};

TEST_F(NamRead, EveryItemHasItsField) { EXPECT_EQ(get(), hex(Nam().record())); }

TEST_F(NamRead, EveryItemIsReadOnceInOrder) {
  get();
  std::vector<uint32_t> read;
  for (const Exchange& exchange : exchanges) {
    EXPECT_EQ(exchange.id, 8u);
    EXPECT_EQ(Bytes(exchange.request.begin() + 4, exchange.request.end()), Bytes(528));
    read.push_back(load_le32(exchange.request.data()));
  }
  EXPECT_THAT(read, ElementsAreArray(kNamItems));
}

// The lines of the digits of the directory number: each as read and as a character.
Lines mdn_digits(const Bytes& read, const std::string& characters) {
  Lines lines;
  for (size_t i = 0; i < read.size(); ++i) {
    lines.push_back("log: " + kMdn + "mdn_number " + std::to_string(read[i]) + " \n");
    lines.push_back("log: " + kMdn + "mdn_number incremented by 0 " +
                    std::to_string(int{characters[i]}) + " ");
  }
  return lines;
}

TEST_F(NamRead, NumbersBytesAreLoggedWithoutASign) {
  items[8][2] = 0xC3;
  get();
  EXPECT_THAT(logs(), Contains(kMdn + "mdn_number 195 \n"));
  EXPECT_THAT(logs(), Contains(kMdn + "mdn_number incremented by 0 243 "));
}

TEST_F(NamRead, EveryStepIsLogged) {
  get();
  const std::string kNumber = Nam().mdn;
  auto item = [&](uint32_t id, const std::string& value) {
    return read_lines(id, items[id]) +
           Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 0 ",
                 "log: " + kBlock + "GET NAM VALUE " + value};
  };
  Lines expected =
      Lines{"log: qorext_hook_sprint_handler: ENTER ",
            "log: qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE 33554433 ",
            "log: qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE 33554433 ",
            "log: qorext_hook_sprint_get_nam_info:  GET NAM INFO  0 ",
            "log: " + kBlock + "GET NAM BLOCK  0 ",
            "log: " + kMdn + "READ NV_DIR_NUMBER_PCS_I 0 "} +
      read_lines(8, items[8]) + Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 0 "} +
      mdn_digits(Bytes(items[8].begin() + 2, items[8].end()), kNumber) +
      Lines{"log: " + kMdn + "READ NV_DIR_NUMBER_PCS_I COMPLETE " + kNumber + " ",
            "log: " + kBlock + "GET NAM VALUE MDN  " + kNumber + " "} +
      item(25, "MIN1  7275643 ") + item(26, "MIN2  195 ") + item(21, "IMSI_T_S1  7275648 ") +
      item(22, "IMSI_T_S2  995 ") + item(15, "SID NID  4183 ") + item(36, "SCM  42 ") +
      item(16, "IMSI_11_12  37 ") + item(17, "IMSI_MCC 200 ") +
      item(29, "P_CHANNEL_A 283 P_CHANNEL_B 384 ") + item(31, "S_CHANNEL_A 691 S_CHANNEL_B 777 ") +
      item(30, "VOCODER 32796 ") + item(20, "IMSI_MCC_T 209 ") + item(18, "IMSI_T_11_12 1 ") +
      item(2, "OVERLOAD CLASS 7 ") +
      Lines{"log: qorext_hook_sprint_get_nam_info:  NO REQUEST ERRORS  0 ",
            "log: " + kInfo + "imsiT => 310120065551239 ",
            "log: " + kInfo + "MIN => 2065551234 ",
            "log: " + kInfo + "IMSI_11_12 => 48 ",
            "log: " + kInfo + "Mcc => 311 MccT => 310 ",
            "log: " + kInfo + "hSid => 4183 hNid => 65534 scm => 42 ",
            "log: " + kInfo + "pCdmaA => 283 pCdmaB => 384  ",
            "log: " + kInfo + " sCdmaA => 691 sCdmaB => 777 ",
            "log: " + kInfo + "Vocoder => 2 Access_Overload => 7 "} +
      reply_lines(replies().at(0));
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

class NamReadFailure : public NamRead, public testing::WithParamInterface<size_t> {};

TEST_P(NamReadFailure, LogsItsNumberAndReturnsAnEmptyRecord) {
  unreadable = {kNamItems[GetParam()]};
  EXPECT_EQ(get(5), hex(Bytes(104)));
  EXPECT_EQ(exchanges.size(), 15u) << "every item is read, also after a failure";
  EXPECT_THAT(logs(), Contains("qorext_hook_sprint_get_nam_item: READ NV VALUE 4 ").Times(1));
  Lines end = Lines{"log: " + kBlock + "ERROR FOUND " + std::to_string(GetParam()) + " "} +
              reply_lines(replies().at(0));
  EXPECT_EQ(Lines(trace.end() - static_cast<ptrdiff_t>(end.size()), trace.end()), end);
  EXPECT_THAT(logs(), Not(Contains(StartsWith(kInfo))));
  EXPECT_THAT(logs(), Not(Contains("qorext_hook_sprint_get_nam_info:  NO REQUEST ERRORS  0 ")));
}

INSTANTIATE_TEST_SUITE_P(OfItem, NamReadFailure, testing::Range<size_t>(0, 15));

TEST_F(NamRead, FirstFailureIsReported) {
  unreadable = {2, 36, 26};
  get(5);
  EXPECT_THAT(logs(), Contains(kBlock + "ERROR FOUND 2 "));
  EXPECT_THAT(logs(), Contains(StartsWith(kBlock + "ERROR FOUND")).Times(1));
}

TEST_F(NamRead, ValueOfAFailedReadIsZero) {
  unreadable = {26};
  get(5);
  EXPECT_THAT(logs(), testing::IsSupersetOf({kBlock + "GET NAM VALUE MIN1  7275643 ",
                                             kBlock + "GET NAM VALUE MIN2  0 ",
                                             kBlock + "GET NAM VALUE IMSI_T_S1  7275648 "}));
}

TEST_F(NamRead, ShorterNumberIsPaddedWithZeros) {
  items[8] = from_hex("00 03 05 0A 07");
  EXPECT_EQ(get().substr(0, 32), hex(text("507000000000000") + Bytes(1)));
  EXPECT_THAT(logs(), Contains(kBlock + "GET NAM VALUE MDN  507000000000000 "));
}

TEST_F(NamRead, OneByteAfterTheDigitCountIsDecoded) {
  items[8] = from_hex("00 02 05 0A 07 08");
  EXPECT_EQ(get().substr(0, 32), hex(text("507000000000000") + Bytes(1)));
}

TEST_F(NamRead, DigitCountBeyondTheNumberIsLimited) {
  items[8] = Bytes{0, 255} + Bytes(60, 3);
  EXPECT_EQ(get().substr(0, 32), hex(text(std::string(15, '3')) + Bytes(1)));
}

TEST_F(NamRead, DigitsOfTenZerosAreDecoded) {
  items[26] = Bytes(3) + le16(999);
  items[25] = Bytes(5) + le32((999 << 14) | (10 << 10) | 999);
  EXPECT_EQ(get().substr(32, 32), hex(text("0000000000") + Bytes(6)));
}

TEST_F(NamRead, VocoderValuesAreConverted) {
  const uint32_t kValues[] = {32768, 32770, 32796, 2, 9, 3, 68};
  for (uint32_t code = 0; code < 7; ++code) {
    items[30] = Bytes(4) + le16(static_cast<uint16_t>(kValues[code])) + Bytes(2);
    EXPECT_EQ(get().substr(2 * 68, 8), hex(le32(code)));
  }
}

TEST_F(NamRead, OtherVocoderValuesAreAllOnes) {
  for (uint16_t value : std::initializer_list<uint16_t>{0, 1, 5, 67, 0x8001, 0xFFFF}) {
    items[30] = Bytes(4) + le16(value) + Bytes(2);
    EXPECT_EQ(get().substr(2 * 68, 8), "FFFFFFFF") << value;
  }
  EXPECT_THAT(logs(), Contains(kInfo + "Vocoder => -1 Access_Overload => 7 "));
}

TEST_F(NamRead, OnlyTheFirstPairIsReported) {
  items[15] = Bytes{0} + le16(1) + le16(2) + le16(3) + le16(4);
  EXPECT_EQ(get().substr(2 * 32, 16), hex(le32(1) + le32(2)));
}

TEST_F(NamRead, ItemAsLongAsTheBufferIsUsed) {
  answer(8, read_answer(36, 1024, {42}));
  items.erase(36);
  EXPECT_EQ(get().substr(2 * 40, 8), "2A000000");
}

TEST_F(NamRead, ItemLongerThanTheBufferCountsAsZero) {
  answer(8, read_answer(36, 1025, Bytes(512, 9)));
  items.erase(36);
  EXPECT_EQ(get().substr(2 * 40, 8), "00000000");
}

}  // namespace nam_read_test
