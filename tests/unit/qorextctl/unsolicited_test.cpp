// SPDX-License-Identifier: Apache-2.0
// The unsolicited frames, with literal bytes and with corrupt ones.
#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/item_text.h"

namespace qorextctl {
namespace unsolicited_test {

struct Case {
  Bytes frame;
  const char* name;
  const char* id;
  const char* fields;
};

Bytes sized(Bytes bytes, size_t size) {
  bytes.resize(size);
  return bytes;
}

Bytes text(const std::string& characters) { return {characters.begin(), characters.end()}; }

std::vector<Case> cases() {
  return {
      {cdma_unsolicited(0x457, sized(text("UNSOLNOTIFY9876-12"), 22)), "notify", "0x00000457",
       R"({"text":"UNSOLNOTIFY9876-12"})"},
      {cdma_unsolicited(0x020001B0, from_hex("FFFF0000")), "carrier-event", "0x020001B0",
       R"({"value":65535})"},
      {cdma_unsolicited(0x020001B1, sized(from_hex("01000000 02 03000000 414243"), 112)),
       "lte-error", "0x020001B1",
       R"({"first_value":1,"second_value":2,"third_value":3,"text":"ABC"})"},
      {generic_unsolicited(0x06000200, {}), "generic", "0x06000200", "{}"},
      {generic_unsolicited(0x04000401, from_hex("EEFFC002 0102")), "kpi-record", "0x04000401",
       R"({"header":46202862,"data":"0102"})"},
      {generic_unsolicited(0x03000B00, from_hex("02 AABB")), "log-upload", "0x03000B00",
       R"({"first_value":2,"data":"AABB"})"},
      {generic_unsolicited(0x04000C00, {1}), "utils-2", "0x04000C00", R"({"data":"01"})"},
      {generic_unsolicited(0x04000E00, {2}), "utils-3", "0x04000E00", R"({"data":"02"})"},
      {generic_unsolicited(0x04001200, {}), "utils-5", "0x04001200", R"({"data":""})"},
      {generic_unsolicited(0x04001300, {4}), "utils-6", "0x04001300", R"({"data":"04"})"},
      {generic_unsolicited(0x04001500, {9}), "utils-9", "0x04001500", R"({"value":9})"},
  };
}

TEST(Unsolicited, EveryMessageHasANameAndFields) {
  for (const Case& test : cases()) {
    DecodedFrame message = decode_unsolicited(test.frame);
    EXPECT_EQ(message.name, test.name);
    EXPECT_EQ(message.id, test.id);
    EXPECT_EQ(to_json(message.fields).dump(), test.fields) << test.name;
    EXPECT_EQ(message.problems, std::vector<std::string>()) << test.name;
  }
}

TEST(Unsolicited, ThePfpTableIsForwardedWhole) {
  Bytes data = counting(232);
  Json shown = to_json(decode_unsolicited(cdma_unsolicited(0x0200001D, data)).fields);
  EXPECT_EQ(shown["rat"], 0x0403);
  EXPECT_EQ(shown["table_index"], 0x08070605);
  EXPECT_EQ(shown["remaining_bytes"], to_hex(part(data, 8, 224)));
}

TEST(Unsolicited, TheCoverageReportIsForwardedWhole) {
  Bytes data = counting(32);
  DecodedFrame message = decode_unsolicited(generic_unsolicited(0x04000301, data));
  EXPECT_EQ(message.name, "coverage");
  EXPECT_EQ(to_json(message.fields)["report"], to_hex(data));
}

TEST(Unsolicited, OnlyFormat0CarriesAStatus) {
  EXPECT_EQ(decode_unsolicited(cdma_unsolicited(0x020001B0, Bytes(4))).status, 0u);
  EXPECT_EQ(decode_unsolicited(generic_unsolicited(0x04000C00, {})).status, std::nullopt);
}

TEST(Unsolicited, UnknownIdsShowTheirData) {
  DecodedFrame message = decode_unsolicited(generic_unsolicited(0x04009900, {1, 2}));
  EXPECT_EQ(message.name, "");
  EXPECT_EQ(message.id, "0x04009900");
  EXPECT_EQ(to_json(message.fields).dump(), R"({"data":"0102"})");
}

TEST(Unsolicited, AnIdIsKnownOnlyInItsOwnFormat) {
  EXPECT_EQ(decode_unsolicited(generic_unsolicited(0x020001B0, Bytes(4))).name, "");
  EXPECT_EQ(decode_unsolicited(cdma_unsolicited(0x04000C00, Bytes(4))).name, "");
}

TEST(Unsolicited, UnknownFormatsAndWrongHeaderSizesAreProblems) {
  Bytes frame = generic_unsolicited(0x04000C00, {});
  frame[0] = 2;
  EXPECT_EQ(decode_unsolicited(frame).problems,
            std::vector<std::string>{"unknown header format 2"});
  frame[0] = 0;
  EXPECT_EQ(decode_unsolicited(frame).problems,
            std::vector<std::string>{"the header size is not 20"});
}

TEST(Unsolicited, ALengthThatDoesNotMatchTheFrameIsAProblem) {
  Bytes frame = cdma_unsolicited(0x020001B0, Bytes(4));
  frame[12] = 0xF0;
  EXPECT_EQ(decode_unsolicited(frame).problems.front(),
            "the length field says 240, the frame has 32 bytes instead of 268");
}

TEST(Unsolicited, FramesTruncatedAtAnyByteAreDecodedUpToTheirEnd) {
  for (const Case& test : cases()) {
    for (size_t size = 0; size < test.frame.size(); ++size) {
      Bytes cut(test.frame.begin(), test.frame.begin() + static_cast<ptrdiff_t>(size));
      DecodedFrame message = decode_unsolicited(cut);
      EXPECT_FALSE(message.problems.empty()) << test.name << " cut at " << size;
      EXPECT_FALSE(to_json(message).dump().empty());
    }
  }
}

}  // namespace unsolicited_test
}  // namespace qorextctl
