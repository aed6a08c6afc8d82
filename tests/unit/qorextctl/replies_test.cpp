// SPDX-License-Identifier: Apache-2.0
// The reply decoders, with literal frames and with corrupt ones.
#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/item_text.h"

namespace qorextctl {
namespace replies_test {

DecodedFrame decoded(const char* name, const Bytes& frame) {
  const Request* request = find_request(name);
  return decode_reply(request, request->reply.form, request->id, frame);
}

std::string fields(const char* name, const Bytes& frame) {
  DecodedFrame reply = decoded(name, frame);
  EXPECT_EQ(reply.problems, std::vector<std::string>()) << name;
  return to_json(reply.fields).dump();
}

std::string cdma_fields(const char* name, const std::string& data) {
  return fields(name, cdma_frame(find_request(name)->id, 0, from_hex(data)));
}

TEST(Replies, AnNvReadThatStatesTooManyBytesIsAProblem) {
  DecodedFrame reply = decoded(
      "nv-read", cdma_frame(0x02000016, 0, from_hex("1C000000 00000000 00000000 FFFFFFFF AABB")));
  EXPECT_EQ(to_json(reply.fields)["data"], "AABB");
  EXPECT_EQ(reply.problems,
            std::vector<std::string>{"length states 4294967295, data has room for 2"});
}

TEST(Replies, FixedItemsAndSingleNumbersHaveNames) {
  struct {
    const char* name;
    const char* data;
    const char* fields;
  } const cases[] = {
      {"read-item-28", "06000000", R"({"data":"06000000","value":6})"},
      {"get-mob-p-rev", "06000000", R"({"mob_p_rev":6})"},
      {"get-bc10", "01000000", R"({"band":1})"},
      {"get-ddtm", "01000000", R"({"ddtm":1})"},
      {"get-ddtm-2", "00000000", R"({"ddtm":0})"},
      {"get-bsr-timer", "3C000000", R"({"timer":60})"},
      {"get-lte-option", "0102", R"({"data":"0102"})"},
      {"utils", "0102", R"({"data":"0102"})"},
      {"check-spc", "", "{}"},
      {"check-spc", "000000000000", "{}"},
      {"check-spc", "010203040506", R"({"data":"010203040506"})"},
      {"verify-subsidy-lock", "", "{}"},
      {"verify-subsidy-lock", "000000000000", "{}"},
      {"nv-write", "AA", R"({"data":"AA"})"},
      {"nv-read", "1C000000 01000000 02000000 03000000 AABBCC 00000000",
       R"({"rde_id":28,"record":1,"offset":2,"length":3,"data":"AABBCC"})"},
  };
  for (const auto& row : cases) EXPECT_EQ(cdma_fields(row.name, row.data), row.fields) << row.name;
}

TEST(Replies, TheBandClass14ReplyCarriesTheIdOfBandClass10) {
  Bytes data = from_hex("01000000");
  EXPECT_TRUE(decoded("get-bc14", cdma_frame(0x020000B0, 0, data)).problems.empty());
  EXPECT_EQ(decoded("get-bc14", cdma_frame(0x020000B2, 0, data)).problems,
            std::vector<std::string>{"the reply's id is not 0x020000B0"});
  EXPECT_TRUE(decoded("get-bc14", cdma_frame(0x020000B2, 6, {})).problems.empty());
}

TEST(Replies, TheNamRecordHasDigitsAsTextAndNumbers) {
  EXPECT_EQ(
      cdma_fields(
          "get-nam",
          "35353531323334353637000000000000 35353537363534333231000000000000 2B100000 FFFF0000 "
          "2A000000 31320000 33313100 01000000 02000000 03000000 04000000 FFFFFFFF 33313200 "
          "33313031323031323334353637383900 09000000 000000000000 0000"),
      R"({"mdn":"5551234567","min":"5557654321","sid":4139,"nid":65535,"scm":42,"imsi_11_12":"12",)"
      R"("imsi_mcc":"311","primary_a":1,"primary_b":2,"secondary_a":3,"secondary_b":4,)"
      R"("vocoder":4294967295,"imsi_t_mcc":"312","imsi_t":"310120123456789","overload_class":9})");
}

TEST(Replies, SidNidPairsAreAList) {
  Bytes data = from_hex("2B100000 01000000 2C100000 FFFF0000");
  data.resize(160);
  Json shown = Json::parse(fields("get-sid-nid", cdma_frame(0x02000003, 0, data)));
  ASSERT_EQ(shown["pairs"].size(), 20u);
  EXPECT_EQ(shown["pairs"][1].dump(), R"({"sid":4140,"nid":65535})");
}

TEST(Replies, TheLteRecordHasSignedSignalValues) {
  EXPECT_EQ(
      cdma_fields("get-lte-data",
                  "02000000 3601 9A01 78563412 1A 05 10270000 20270000 B0 9CFF F6 "
                  "9CFFFFFF"),
      R"({"service_state":2,"mcc":310,"mnc":410,"cell_id":305419896,"channel_third_value":26,"channel_fourth_value":5,)"
      R"("second_channel":10000,"first_channel":10016,"rssi":-80,"rsrp":-100,"rsrq":-10,)"
      R"("tx_power":-100})");
}

TEST(Replies, ApnsAreListedUpToTheirCount) {
  Bytes data(1017);
  data[0] = 1;
  std::string name = "internet";
  std::copy(name.begin(), name.end(), data.begin() + 1);
  Bytes rest = from_hex("01000000 0A000001 20010DB8000000000000000000000001");
  std::copy(rest.begin(), rest.end(), data.begin() + 1 + 103);
  EXPECT_EQ(fields("get-apn", cdma_frame(0x020000C1, 0, data)),
            R"({"count":1,"apns":[{"name":"internet","first_value":1,"second_value":167772161,)"
            R"("remaining_bytes":"20010DB8000000000000000000000001"}]})");
}

TEST(Replies, ACountOfApnsAboveTheRoomIsAProblem) {
  Bytes data(1017);
  data[0] = 200;
  DecodedFrame reply = decoded("get-apn", cdma_frame(0x020000C1, 0, data));
  EXPECT_EQ(to_json(reply.fields)["apns"].size(), 8u);
  EXPECT_EQ(reply.problems, std::vector<std::string>{"count states 200, apns has room for 8"});
}

TEST(Replies, TheTotOrderShowsTheEntriesInUse) {
  Bytes data = from_hex("0200 01000000 02000000 03000000");
  data.resize(62);
  EXPECT_EQ(fields("get-tot", cdma_frame(0x020000C4, 0, data)), R"({"count":2,"entries":[1,2]})");
}

TEST(Replies, CallProcessingFieldsHaveTheirOffsets) {
  Bytes data;
  for (uint32_t i = 0; i < 79; ++i) append_le(data, i, 4);
  data[44] = 0x9C;
  data[45] = data[46] = data[47] = 0xFF;
  Json shown = Json::parse(fields("get-call-processing", cdma_frame(0x02000011, 0, data)));
  EXPECT_EQ(shown["fer"], 0);
  EXPECT_EQ(shown["nid"], 6);
  EXPECT_EQ(shown["tx_power"], -100);
  EXPECT_EQ(shown["rssi"], 19);
  EXPECT_EQ(shown["p_rev_above_5"], 21);
  EXPECT_EQ(shown["p_rev_in_use"], 22);
  EXPECT_EQ(shown["active_set_pn"], Json({24, 25, 26, 27, 28, 29}));
  EXPECT_EQ(shown["active_set_strength"], Json({30, 31, 32, 33, 34, 35}));
  EXPECT_EQ(shown["neighbor_set_pn"].size(), 40u);
  EXPECT_EQ(shown["neighbor_set_pn"][39], 75);
  EXPECT_EQ(shown["base_latitude"], 76);
  EXPECT_EQ(shown["rate_reduction"], 78);
}

TEST(Replies, EvdoFieldsHaveTheirOffsets) {
  Bytes data;
  for (uint32_t i = 0; i < 36; ++i) append_le(data, i, 4);
  Json shown = Json::parse(fields("get-evdo", cdma_frame(0x02000012, 0, data)));
  EXPECT_EQ(shown["at_state"], 10);
  EXPECT_EQ(shown["users"], 12);
  EXPECT_EQ(shown["sector_id"].size(), 16u);
  EXPECT_EQ(shown["sector_id"][15], 31);
  EXPECT_EQ(shown["pilot_energy"], 32);
  EXPECT_EQ(shown["an_auth_status"], 35);
}

TEST(Replies, TheFirstByteOfSomeGenericRepliesIsTheStatus) {
  for (const char* name : {"sysinfo-filter", "coverage", "coverage-mode"}) {
    uint32_t id = find_request(name)->id;
    EXPECT_EQ(fields(name, generic_frame(id, {0})), R"({"result":0})");
    DecodedFrame failed = decoded(name, generic_frame(id, {5}));
    EXPECT_EQ(failed.status, 5u);
    EXPECT_TRUE(failed.fields.empty());
    EXPECT_EQ(decoded(name, generic_frame(id, {7})).status, 7u);
  }
}

TEST(Replies, TheRadioStateFollowsItsStatus) {
  Bytes data = counting(17);
  data[0] = 0;
  EXPECT_EQ(fields("call-end-radio-state", generic_frame(0x50505, data)),
            R"({"result":0,"state":"02030405060708090A0B0C0D0E0F1011"})");
  DecodedFrame failed = decoded("call-end-radio-state", generic_frame(0x50505, {5}));
  EXPECT_EQ(failed.status, 5u);
  EXPECT_TRUE(failed.problems.empty());
}

TEST(Replies, GenericRepliesHaveDataOrASingleFailureByte) {
  EXPECT_EQ(fields("silent-reboot", generic_frame(0x50019, {})), R"({"data":""})");
  EXPECT_EQ(fields("tune", generic_frame(0x5002A, {5, 6})), R"({"data":"0506"})");
  EXPECT_EQ(fields("operator-name", generic_frame(0xA0006, {'A', 0xC3, 0xA9})),
            "{\"name\":\"A\xC3\xA9\"}");
  for (const char* name : {"silent-reboot", "tune", "operator-name"}) {
    DecodedFrame failed = decoded(name, generic_frame(find_request(name)->id, {5}));
    EXPECT_EQ(failed.status, 5u) << name;
    EXPECT_TRUE(failed.fields.empty()) << name;
  }
}

TEST(Replies, AGenericErrorReplyMeansNotSupported) {
  DecodedFrame reply =
      decode_reply(nullptr, ReplyForm::generic, 0x50506, from_hex("01050506 FFFFFFFF"));
  EXPECT_EQ(reply.status, 6u);
  EXPECT_EQ(reply.id, "0x050506");
  EXPECT_TRUE(reply.problems.empty());
  DecodedFrame plmn = decoded("data-plmn", from_hex("01060001 FFFFFFFF"));
  EXPECT_EQ(plmn.status, 6u);
}

TEST(Replies, ADataPlmnRecordOfZerosIsAFailure) {
  Bytes record(568);
  EXPECT_EQ(decoded("data-plmn", record).status, 5u);
  record[567] = 1;
  DecodedFrame reply = decoded("data-plmn", record);
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(to_json(reply.fields)["record"], to_hex(record));
}

TEST(Replies, IdsWithoutARowShowTheirData) {
  DecodedFrame reply =
      decode_reply(nullptr, ReplyForm::cdma, 0x02000099, cdma_frame(0x02000099, 0, {1, 2}));
  EXPECT_EQ(reply.name, "");
  EXPECT_EQ(to_json(reply.fields).dump(), R"({"data":"0102"})");
}

TEST(Replies, AFailedCodeCheckHasItsStatus) {
  DecodedFrame refused = decoded("check-spc", cdma_frame(0x0200000A, 3, Bytes(6)));
  EXPECT_EQ(refused.status, 3u);
  EXPECT_EQ(refused.status_name, "subsidy lock refused");
}

TEST(Replies, StatusesHaveNames) {
  EXPECT_EQ(status_name(0), "success");
  EXPECT_EQ(status_name(2), "refused by the modem");
  EXPECT_EQ(status_name(3), "subsidy lock refused");
  EXPECT_EQ(status_name(5), "failure");
  EXPECT_EQ(status_name(6), "obsolete or not supported");
  EXPECT_EQ(status_name(4), "unknown");
}

TEST(Replies, DataOfTheWrongSizeIsAProblemOfEachMissingField) {
  DecodedFrame reply = decoded("get-bc10", cdma_frame(0x020000B0, 0, {1, 2, 3}));
  EXPECT_EQ(reply.problems, (std::vector<std::string>{"3 bytes of data, 4 expected",
                                                      "band is missing: the data ends before"}));
}

TEST(Replies, ALengthThatDoesNotMatchTheFrameIsAProblem) {
  Bytes frame = cdma_frame(0x020000B0, 0, from_hex("01000000"));
  frame[4] = 200;
  DecodedFrame reply = decoded("get-bc10", frame);
  EXPECT_EQ(reply.problems.front(),
            "the length field says 200, the frame has 24 bytes instead of 220");
}

TEST(Replies, AFailureWithoutDataIsNotAProblem) {
  for (const Request& request : catalogue()) {
    if (request.reply.form != ReplyForm::cdma) continue;
    uint32_t id = request.reply.id != 0 ? request.reply.id : request.id;
    DecodedFrame reply = decode_reply(&request, ReplyForm::cdma, request.id, cdma_frame(id, 5, {}));
    EXPECT_EQ(reply.status, 5u) << request.name;
    EXPECT_TRUE(reply.problems.empty() && reply.fields.empty()) << request.name;
  }
}

// The sanitizers check that nothing outside the frame is read.
TEST(Replies, TruncatedFramesAreDecodedUpToTheirEnd) {
  constexpr size_t kCutAtEveryByte = 200;  // the longest header and record
  constexpr size_t kStep = 7;
  for (const Request& request : catalogue()) {
    Bytes whole = counting(request.reply.layout ? 1100 : 40);
    append_le(whole, 0xFFFFFFFF, 4);
    for (size_t size = 0; size <= whole.size(); size += size < kCutAtEveryByte ? 1 : kStep) {
      Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
      DecodedFrame reply = decode_reply(&request, request.reply.form, request.id, cut);
      EXPECT_EQ(reply.frame, cut);
      EXPECT_FALSE(to_json(reply).dump().empty());
    }
  }
}

}  // namespace replies_test
}  // namespace qorextctl
