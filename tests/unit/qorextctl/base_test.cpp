// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/bytes.h"

#include <gtest/gtest.h>

#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/text.h"

namespace qorextctl {
namespace {

const Bytes kSample = {0x01, 0x02, 0x03, 0x84};

TEST(Bytes, NumbersAreReadInBothByteOrders) {
  EXPECT_EQ(load_le(kSample, 0, 4), 0x84030201u);
  EXPECT_EQ(load_be(kSample, 0, 4), 0x01020384u);
  EXPECT_EQ(load_be(kSample, 1, 3), 0x020384u);
}

TEST(Bytes, BytesAfterTheEndCountAsZero) {
  EXPECT_EQ(load_le(kSample, 3, 4), 0x84u);
  EXPECT_EQ(load_be(kSample, 3, 2), 0x8400u);
  EXPECT_EQ(load_le(kSample, 100, 4), 0u);
}

TEST(Bytes, NumbersAreAppendedInBothByteOrders) {
  Bytes bytes;
  append_le(bytes, 0x0102, 2);
  append_be(bytes, 0x030405, 3);
  EXPECT_EQ(bytes, (Bytes{0x02, 0x01, 0x03, 0x04, 0x05}));
}

TEST(Bytes, APartEndsWithTheBytes) {
  EXPECT_EQ(part(kSample, 2, 10).size(), 2u);
  EXPECT_EQ(part(kSample, 4, 1).size(), 0u);
  EXPECT_EQ(part(kSample, 1, 2).front(), 0x02);
}

TEST(Bytes, HexMayHaveBlanksAndColonsBetweenPairs) {
  EXPECT_EQ(parse_hex("01 02:03 84"), kSample);
  EXPECT_EQ(parse_hex("aAbB"), (Bytes{0xAA, 0xBB}));
  EXPECT_EQ(parse_hex(""), Bytes());
}

TEST(Bytes, HalfBytesAndOtherCharactersAreNotHex) {
  EXPECT_EQ(parse_hex("012"), std::nullopt);
  EXPECT_EQ(parse_hex("0 1"), std::nullopt);
  EXPECT_EQ(parse_hex("0g"), std::nullopt);
  EXPECT_EQ(parse_hex("0x01"), std::nullopt);
}

TEST(Bytes, HexIsWrittenInUpperCaseWithoutSeparators) {
  EXPECT_EQ(to_hex(Bytes{0xAB, 0x0C}), "AB0C");
  EXPECT_EQ(to_hex({}), "");
}

TEST(Bytes, PrintableTextKeepsUtf8AndEscapesOtherBytes) {
  EXPECT_EQ(printable(Bytes{'a', 0xC3, 0xA9}), "a\xC3\xA9");
  EXPECT_EQ(printable(Bytes{'a', 0xC3, 'b'}), "a\\xC3b");
  EXPECT_EQ(printable(Bytes{'a', '\n', 0x7F}), "a\\x0A\\x7F");
}

TEST(Nearest, FindsANameWithUpToTwoMistakes) {
  EXPECT_EQ(nearest("nv-raed", {"nv-write", "nv-read"}), "nv-read");
  EXPECT_EQ(nearest("get-nma", {"get-nam", "set-nam"}), "get-nam");
  EXPECT_EQ(nearest("frobnicate", {"nv-write", "nv-read"}), "");
  EXPECT_EQ(nearest("nv-re", {"nv-read"}), "nv-read");
  EXPECT_EQ(nearest("nv-r", {"nv-read"}), "");
  EXPECT_EQ(nearest(std::string(500'000, 'n'), std::vector<std::string>(1000, "nv-read")), "");
}

TEST(SplitLine, AcceptsQuotesAndComments) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(split_line("a  b\tc\r"), (Words{"a", "b", "c"}));
  EXPECT_EQ(split_line("a='b c' \"d e\" ''"), (Words{"a=b c", "d e", ""}));
  EXPECT_EQ(split_line("a#b # c"), (Words{"a#b"}));
  EXPECT_EQ(split_line("# all"), Words());
  EXPECT_EQ(split_line("'open"), std::nullopt);
}

TEST(Deadline, HasNoTimeLeftAfterItHasPassed) {
  EXPECT_EQ(Deadline::in_seconds(-1).remaining_ms(), 0);
  EXPECT_TRUE(Deadline::in_seconds(-1).passed());
}

TEST(Deadline, HasTheRemainingTimeBeforeItPasses) {
  Deadline deadline = Deadline::in_seconds(100);
  EXPECT_FALSE(deadline.passed());
  EXPECT_GT(deadline.remaining_ms(), 90'000);
  EXPECT_LE(deadline.remaining_ms(), 100'000);
}

}  // namespace
}  // namespace qorextctl
