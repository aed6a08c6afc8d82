// SPDX-License-Identifier: Apache-2.0
// Live data of the CDMA 1x and EVDO links: packed records are unpacked into words.
#include "tests/e2e/support/engineering_records.h"
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr uint32_t kCallProcessing = 0x02000011;
constexpr uint32_t kEvdo = 0x02000012;

class Engineering : public HandsetTest {
 protected:
  void set_text(const std::string& which, const std::string& text) {
    handset.modem().command("set engineering." + which + "_text=" + text);
  }
};

TEST_F(Engineering, ACallRecordIsUnpackedFieldByField) {
  set_text("call_processing", as_hex(call_record()));
  Served served = handset.serve(cdma(kCallProcessing));
  EXPECT_EQ(served.replies, as_hex(reply(kCallProcessing, 0, call_data())));
  EXPECT_THAT(handset.modem_requests(),
              ElementsAre(vendor_request("engineering_info", R"({"type":0})")));
}

TEST_F(Engineering, ACallRecordIsLoggedFieldByField) {
  Served served = handset.serve(cdma(kCallProcessing));
  Texts log(served.log.begin() + 4, served.log.begin() + 7);
  EXPECT_THAT(log,
              ElementsAre("qorext_hook_sprint_get_call_processing_data:  ENTER FUNCTION  0 ",
                          "In Engineering info request 0", "Successfully retrieved datalen 328"));
  EXPECT_EQ(served.log[7], "qorext_hook_sprint_get_call_processing_data() hexDump...");
  Texts fields(served.log.begin() + 9, served.log.begin() + 14);
  EXPECT_THAT(
      fields,
      ElementsAre("  CP status1: fer=4,   activePilotCount=2,   neighborPilotCount=4,   "
                  "candPilotCount=1,   bestActivePilot=168,   bestActiveStrength=14,   "
                  "bestNeighborPilot=336,   bestNeighborStrength=27, ",
                  "CP status2: sid=4700,   nid=12,   channel=283,   serviceOption=68,   "
                  "droppedCallCounter=1,   lastCallIndicator=2,   sCallCounter=7,   PRevInUse=6, ",
                  "CP status3: band=1,   lnaStatus=1,   cpState=4,   txPower=-12,   rssi=78   "
                  "bid=2051   bsLat=563040   bsLat=-1362240 ",
                  "CP status4: activeSetPn 0 = 168", "CP status4: activeSetStrength 0 = 14"));
  EXPECT_EQ(served.log[22], "CP status4: activeSetPn 5 = 0");
  EXPECT_EQ(served.log[24], "CP status5: neighborSetPn 0 = 336");
  EXPECT_EQ(served.log[63], "CP status5: neighborSetPn 39 = 0");
  EXPECT_EQ(served.log[64], "CP status6: rate_redu=0 ");
}

TEST_F(Engineering, AnEvdoRecordIsUnpackedFieldByField) {
  set_text("evdo", as_hex(evdo_record()));
  Served served = handset.serve(cdma(kEvdo));
  EXPECT_EQ(served.replies, as_hex(reply(kEvdo, 0, evdo_data())));
  EXPECT_THAT(handset.modem_requests(),
              ElementsAre(vendor_request("engineering_info", R"({"type":1})")));
}

TEST_F(Engineering, AnEvdoRecordIsLoggedFieldByField) {
  Served served = handset.serve(cdma(kEvdo));
  EXPECT_THAT(
      served.log,
      Contains("EVDO status1: hdrChanNum=476,  uatiColorCode=37,  txUati=0x2507C1A9,  "
               "pilotPn=168,  hdrRssi=65465,  rxPwrRx0Dbm=-72  rxPwrRx1Dbm=-75,  measPkts=1200,  "
               "errPkts=9,  sessionState=2,"));
  EXPECT_THAT(served.log,
              Contains("EVDO status2: atState=3,  userCount=5   dropCount=0,  hybridMode=1   "
                       "macIndex=72,  pilotEnergy=-6,  drcCover=2   sinr=9,  anAuthStatus=1 "));
  EXPECT_THAT(served.log, Contains("EVDO status3: sectorIds 3 = 192"));
  EXPECT_THAT(served.log, Contains("EVDO status3: sectorIds 15 = 1"));
}

TEST_F(Engineering, ARevisionInUseAbove5IsMarked) {
  for (uint8_t revision : {uint8_t{5}, uint8_t{6}}) {
    Bytes record = zeros(164);
    record[32] = revision;
    set_text("call_processing", as_hex(record) + "x");  // text, not a number
    Bytes data = zeros(kCallReply);
    data[84] = revision > 5 ? 1 : 0;
    data[88] = revision;
    expect_reply(cdma(kCallProcessing), reply(kCallProcessing, 0, data));
  }
}

TEST_F(Engineering, AfterARefusalTheReplyIsAllZeros) {
  handset.inject("engineering_info", "error");
  Served call = handset.serve(cdma(kCallProcessing));
  EXPECT_EQ(call.replies, as_hex(reply(kCallProcessing, 0, zeros(kCallReply))));
  EXPECT_EQ(call.log[6], "qor_qmi_sprint_get_engineering_info: Get Engineer info failed (1).");
  handset.inject("engineering_info", "error");
  Served evdo = handset.serve(cdma(kEvdo));
  EXPECT_EQ(evdo.replies, as_hex(reply(kEvdo, 0, zeros(kEvdoReply))));
}

TEST_F(Engineering, CharactersThatAreNotHexRepeatTheDigitBefore) {
  set_text("evdo", "0G7z5");
  Served served = handset.serve(cdma(kEvdo));
  Bytes data = words({0x7700, 0x50}) + zeros(kEvdoReply - 8);
  EXPECT_EQ(served.replies, as_hex(reply(kEvdo, 0, data)));
  EXPECT_THAT(served.log, Contains("qorext_hook_sprint_hexstr_to_bin invalid char 71 1"));
  EXPECT_THAT(served.log, Contains("qorext_hook_sprint_hexstr_to_bin invalid char 122 3"));
}

TEST_F(Engineering, TheLongestTextIsCutToTheRecord) {
  set_text("evdo", as_hex(Bytes(500, 0xAB)));
  Served served = handset.serve(cdma(kEvdo));
  EXPECT_EQ(served.replies.substr(0, 44),
            "1200000290000000000000000000"
            "00000000"
            "abab0000");
  EXPECT_EQ(served.replies.size(), 2 * (kEvdoReply + 20));
}

}  // namespace
}  // namespace e2e
