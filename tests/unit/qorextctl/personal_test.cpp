// SPDX-License-Identifier: Apache-2.0
// What is masked in data that is kept.
#include "tools/qorextctl/frames/personal.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tests/unit/qorextctl/request_samples.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/frames/item_text.h"

namespace qorextctl {
namespace personal_test {

DecodedFrame masked(FrameKind kind, const Bytes& frame) {
  DecodedFrame decoded = decode_as(kind, frame);
  mask(decoded);
  return decoded;
}

DecodedFrame masked_request(const std::string& line) {
  return masked(FrameKind::request, built(line));
}

std::string fields(const DecodedFrame& decoded) { return to_json(decoded.fields).dump(); }

Bytes nam_record() {
  Bytes request = built(
      "set-nam spc=246810 new-spc=135791 mdn=9135550142 min=9135550142 imsi-11-12=26 imsi-mcc=310 "
      "imsi-t-mcc=310 imsi-t=310269135550142 sid=4139 nid=7");
  return {request.begin() + 18, request.end()};
}

const std::string kMaskedRecord = masked_hex(32) + "2B10000007000000" + "2A000000" + masked_hex(8) +
                                  "1B01000080010000B30200000903000000000000" + masked_hex(20) +
                                  "00000000";

TEST(Personal, OnlyNetworkValuesOfANamRecordAreOpen) {
  DecodedFrame reply = masked(FrameKind::reply, cdma_frame(0x02000001, 0, nam_record()));
  EXPECT_EQ(fields(reply),
            R"({"mdn":"***","min":"***","sid":4139,"nid":7,"scm":42,"imsi_11_12":"***",)"
            R"("imsi_mcc":"***","primary_a":283,"primary_b":384,"secondary_a":691,)"
            R"("secondary_b":777,"vocoder":0,"imsi_t_mcc":"***","imsi_t":"***",)"
            R"("overload_class":0})");
  EXPECT_EQ(hex_of(reply).substr(36, kMaskedRecord.size()), kMaskedRecord);
}

TEST(Personal, TheBytesOfAMaskedFrameAreZero) {
  Bytes frame = masked(FrameKind::reply, cdma_frame(0x02000001, 0, nam_record())).frame;
  EXPECT_TRUE(all_zero(part(frame, 18, 32)));
  EXPECT_EQ(load_le(frame, 18 + 32, 4), 4139U);
}

TEST(Personal, BothCodesOfANamWriteAreMasked) {
  DecodedFrame request =
      masked(FrameKind::request, built("set-nam spc=246810 new-spc=135791 mdn=9135550142"));
  EXPECT_EQ(to_json(request.fields)["spc"], "***");
  EXPECT_EQ(to_json(request.fields)["new_spc"], "***");
  std::string hex = hex_of(request);
  EXPECT_EQ(hex.substr(0, 36), "020000026800000000000000" + masked_hex(6));
  EXPECT_EQ(hex.substr(2 * (18 + 96)), masked_hex(6) + "0000");
}

TEST(Personal, CodesAndKeysAreMasked) {
  for (const char* line : {"check-spc code=246810", "verify-subsidy-lock code=246810",
                           "write-akey spc=246810 akey=ABCDEFGHIJKLMNOPQRSTUVWXYZ",
                           "cdma id=0x02000099 code=246810", "cdma id=0x02000004 code=246810"}) {
    DecodedFrame request = masked_request(line);
    for (const char* secret : {"246810", "323436383130", "ABCDEF", "414243444546"}) {
      EXPECT_EQ(to_json(request).dump().find(secret), std::string::npos) << line;
    }
    EXPECT_EQ(hex_of(request).substr(24, 12), masked_hex(6)) << line;
  }
}

TEST(Personal, BytesThatAReplyRepeatsOfItsRequestAreMasked) {
  Bytes reply = built("write-akey spc=246810 akey=ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  reply.resize(20);
  reply[4] = 0;
  EXPECT_EQ(hex_of(masked(FrameKind::reply, reply)),
            "130000020000000000000000" + masked_hex(6) + masked_hex(2));
  EXPECT_EQ(hex_of(masked(FrameKind::reply, cdma_frame(0x020000B8, 0, {}))),
            "B800000200000000000000000000000000000000");
}

TEST(Personal, ItemsAreMaskedByTheirId) {
  for (int item : {8, 16, 17, 18, 20, 21, 22, 25, 26, 32}) {
    DecodedFrame write = masked_request("nv-write data=0102030405 rde-id=" + std::to_string(item));
    EXPECT_EQ(to_json(write.fields)["data"], "***") << item;
    EXPECT_EQ(hex_of(write).substr(2 * 34), masked_hex(5)) << item;
    Bytes data;
    append_le(data, static_cast<uint32_t>(item), 4);
    for (const Bytes& more : {Bytes(8), from_hex("02000000 0A0B 00000000")}) {
      data.insert(data.end(), more.begin(), more.end());
    }
    DecodedFrame read = masked(FrameKind::reply, cdma_frame(0x02000016, 0, data));
    EXPECT_EQ(to_json(read.fields)["data"], "***") << item;
    EXPECT_EQ(hex_of(read).find("0A0B"), std::string::npos) << item;
  }
  DecodedFrame open = masked_request("nv-write rde-id=28 data=06");
  EXPECT_EQ(to_json(open.fields)["data"], "06");
  EXPECT_EQ(hex_of(open), to_hex(built("nv-write rde-id=28 data=06")));
}

TEST(Personal, OnlyTheHeaderOfAMalformedFrameIsOpen) {
  Bytes request = built("set-nam spc=246810 mdn=9135550142");
  for (uint8_t stated : {uint8_t{0}, uint8_t{32}, uint8_t{200}}) {
    Bytes malformed = request;
    malformed[4] = stated;
    for (FrameKind kind : {FrameKind::request, FrameKind::reply}) {
      EXPECT_EQ(hex_of(masked(kind, malformed)).substr(24), masked_hex(request.size() - 12))
          << int{stated};
    }
  }
}

TEST(Personal, PersonalBytesOfATruncatedFrameAreMasked) {
  Bytes request = built("write-akey spc=246810 akey=ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  for (size_t size = 0; size <= request.size(); ++size) {
    Bytes cut(request.begin(), request.begin() + static_cast<ptrdiff_t>(size));
    std::string hex = hex_of(masked(FrameKind::request, cut));
    EXPECT_EQ(hex.size(), 2 * size);
    for (size_t i = 12; i < size; ++i) EXPECT_EQ(hex.substr(2 * i, 2), "**") << size << " " << i;
  }
}

TEST(Personal, BytesOfUnknownMeaningAreMasked) {
  for (const char* line : {"utils type=9 data=323436383130", "cdma id=0x02000099 data=323436383130",
                           "generic id=0x50599 data=323436383130"}) {
    std::string shown = to_json(masked_request(line)).dump();
    EXPECT_EQ(shown.find("323436383130"), std::string::npos) << line;
    EXPECT_NE(shown.find(R"("data":"***")"), std::string::npos) << line;
  }
  for (uint32_t id : {0x0200001EU, 0x02000099U}) {
    DecodedFrame reply = masked(FrameKind::reply, cdma_frame(id, 0, from_hex("3234")));
    EXPECT_EQ(fields(reply), R"({"data":"***"})") << id;
    EXPECT_EQ(hex_of(reply).substr(36, 4), "****") << id;
  }
  DecodedFrame message = masked(FrameKind::unsolicited, generic_unsolicited(0x04009900, {1, 2}));
  EXPECT_EQ(fields(message), R"({"data":"***"})");
  EXPECT_EQ(hex_of(message).substr(2 * 16), masked_hex(2 + 12));
}

TEST(Personal, UnexpectedBytesOfARequestAreMasked) {
  DecodedFrame request =
      masked(FrameKind::request, from_hex("BC000002 02000000 00000000 000000000000 3132"));
  EXPECT_EQ(request.name, "get-bsr-timer");
  EXPECT_EQ(fields(request), R"({"data":"***"})");
  EXPECT_EQ(hex_of(request).substr(36), "****");
}

TEST(Personal, FieldsOfAMalformedRequestAreMasked) {
  DecodedFrame request =
      masked(FrameKind::request, from_hex("16000002 10000000 00000000 000000000000 31323334"));
  EXPECT_EQ(fields(request), R"({"rde_id":"***"})");
  EXPECT_EQ(hex_of(request).substr(36), masked_hex(4));
}

TEST(Personal, BytesWithoutAValidHeaderAreAllMasked) {
  DecodedFrame request = masked(FrameKind::request, from_hex("3132333435363738"));
  EXPECT_EQ(request.id, "***");
  EXPECT_EQ(hex_of(request), masked_hex(8));
  DecodedFrame reply = masked(FrameKind::reply, from_hex("34333231 FFFFFFFF"));
  EXPECT_EQ(reply.id, "***");
  EXPECT_EQ(hex_of(reply), masked_hex(8));
}

TEST(Personal, AFrameThatIsNotMaskedShowsAllValues) {
  DecodedFrame request = decode_as(FrameKind::request, built("check-spc code=246810"));
  EXPECT_EQ(to_json(request.fields)["code"], "246810");
  EXPECT_EQ(hex_of(request), to_hex(built("check-spc code=246810")));
}

}  // namespace personal_test
}  // namespace qorextctl
