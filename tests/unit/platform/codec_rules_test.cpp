// SPDX-License-Identifier: Apache-2.0
// The rules of the codec, with a small message for the purpose.
#include "tests/unit/platform/codec_support.h"

namespace codec_test {
namespace {

using namespace qmi_idl;

constexpr Element kElements[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x01, kNoOffset, "state", u32(8)},
    {0x10, 12, "level", i8(13)},
    {0x11, 14, "mode", signed_enum8(16)},
    {0x12, 20, "list", array(count8_u32(24), i16(28), 3)},
    {0x13, 36, "text", text8(37, 4)},
};
constexpr Message kMessage = {0x20, Direction::response, "probe", 42, kElements};
static_assert(is_consistent(kMessage));

const Bytes kSuccess = {0x02, 4, 0, 0, 0, 0, 0};
const Bytes kFailure = {0x02, 4, 0, 1, 0, 48, 0};
const Bytes kState = {0x01, 4, 0, 0x78, 0x56, 0x34, 0x12};

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// The structure decoded from these bytes, or nullopt when they are refused.
std::optional<Bytes> decode_exact(const Bytes& wire) {
  ExactBuffer input(wire);
  ExactBuffer output(kMessage.size);
  if (!decode(kMessage, input.span(), output.span())) return std::nullopt;
  return Bytes(output.span().begin(), output.span().end());
}

void expect_decoded(const Bytes& wire, const std::vector<Field>& fields) {
  auto structure = decode_exact(wire);
  ASSERT_TRUE(structure);
  expect_fields(*structure, fields);
}

TEST(Codec, RequiresTheMandatoryTlvsOfASuccess) {
  EXPECT_FALSE(decode_exact(kSuccess));
  EXPECT_FALSE(decode_exact(kState));
  EXPECT_TRUE(decode_exact(kSuccess + kState));
}

TEST(Codec, AcceptsAFailureResultAlone) {
  expect_decoded(kFailure, {u32_at(0, 1), u32_at(4, 48), u32_at(8, 0)});
}

TEST(Codec, AcceptsTlvsInAnyOrder) { expect_decoded(kState + kSuccess, {u32_at(8, 0x12345678)}); }

TEST(Codec, SkipsUnknownTlvs) {
  expect_decoded(kSuccess + Bytes{0x77, 2, 0, 9, 9} + kState + Bytes{0x78, 0, 0},
                 {u32_at(8, 0x12345678)});
}

TEST(Codec, SkipsBytesAfterTheKnownElementsOfATlv) {
  expect_decoded(kSuccess + Bytes{0x01, 6, 0, 1, 0, 0, 0, 7, 7}, {u32_at(8, 1)});
}

TEST(Codec, RefusesATlvShorterThanItsElements) {
  EXPECT_FALSE(decode_exact(kSuccess + Bytes{0x01, 0, 0}));
  EXPECT_FALSE(decode_exact(kSuccess + Bytes{0x01, 3, 0, 1, 2, 3}));
}

TEST(Codec, RefusesLengthsAndCountsThatDoNotFit) {
  const std::pair<const char*, Bytes> kCases[] = {
      {"a TLV longer than the message", {0x77, 5, 0, 1}},
      {"the longest TLV without content", {0x77, 0xFF, 0xFF}},
      {"a TLV header of two bytes", {0x77, 0}},
      {"a list above its capacity", {0x12, 9, 0, 4, 1, 0, 2, 0, 3, 0, 4, 0}},
      {"a text above its capacity", {0x13, 6, 0, 5, 'a', 'b', 'c', 'd', 'e'}},
      {"a count above the bytes that follow", {0x12, 3, 0, 2, 1, 0}},
      {"a list without a count", {0x12, 0, 0}},
  };
  for (const auto& [what, tlv] : kCases)
    EXPECT_FALSE(decode_exact(kSuccess + kState + tlv)) << what;
}

TEST(Codec, SignExtendsNumbersToTheirWidthInTheStructure) {
  expect_decoded(kSuccess + kState + Bytes{0x10, 1, 0, 0xB0} + Bytes{0x11, 1, 0, 0xFF},
                 {u8_at(12, 1), u8_at(13, 0xB0), u32_at(16, -1)});
}

TEST(Codec, LeavesTheValidityOfAnAbsentTlvZero) {
  expect_decoded(kSuccess + kState, {u8_at(12, 0), u8_at(14, 0), u8_at(20, 0)});
}

TEST(Codec, DecodesAListUpToItsCapacity) {
  expect_decoded(kSuccess + kState + Bytes{0x12, 7, 0, 3, 1, 0, 0xFE, 0xFF, 3, 0},
                 {u32_at(24, 3), u16_at(28, 1), u16_at(30, -2), u16_at(32, 3)});
}

TEST(Codec, RefusesToEncodeACountAboveItsCapacity) {
  Bytes structure(kMessage.size);
  structure[20] = 1;
  Bytes wire(kWireRoom);
  put(structure, 24, 3, 4);
  EXPECT_GT(encode(kMessage, structure, wire), 0);
  put(structure, 24, 4, 4);
  EXPECT_EQ(encode(kMessage, structure, wire), -1);
  put(structure, 24, 0xFFFFFFFF, 4);
  EXPECT_EQ(encode(kMessage, structure, wire), -1);
}

TEST(Codec, EncodesATextUpToItsTerminator) {
  Bytes structure(kMessage.size);
  structure[36] = 1;
  memcpy(&structure[37], "ab\0d", 5);
  const Bytes expected = kSuccess + Bytes{0x01, 4, 0, 0, 0, 0, 0} + Bytes{0x13, 3, 0, 2, 'a', 'b'};
  EXPECT_EQ(encoded(kMessage, structure), expected);
}

TEST(Codec, EncodesAFullTextWithoutItsTerminator) {
  Bytes structure(kMessage.size);
  structure[36] = 1;
  memcpy(&structure[37], "abcd", 5);
  Bytes wire = encoded(kMessage, structure);
  auto structure_again = decode_exact(wire);
  ASSERT_TRUE(structure_again);
  EXPECT_STREQ(reinterpret_cast<const char*>(&(*structure_again)[37]), "abcd");
}

TEST(Header, IsStoredLittleEndian) {
  std::array<uint8_t, kHeaderSize> bytes;
  store_header({WireType::indication, 0x1234, 0x0110, 0x0203}, bytes);
  EXPECT_EQ(bytes, (std::array<uint8_t, 7>{4, 0x34, 0x12, 0x10, 0x01, 0x03, 0x02}));
}

TEST(Header, IsLoadedOnlyWithTheLengthInIt) {
  const Bytes packet = {2, 0x34, 0x12, 0x10, 0x01, 1, 0, 0xAA};
  auto header = load_header(packet);
  ASSERT_TRUE(header);
  EXPECT_EQ(header->type, WireType::response);
  EXPECT_EQ(header->transaction, 0x1234);
  EXPECT_EQ(header->message_id, 0x0110);
  EXPECT_EQ(header->length, 1);
  EXPECT_FALSE(load_header(packet + Bytes{0}));
  for (size_t size = 0; size < packet.size(); ++size) {
    ExactBuffer cut(std::span<const uint8_t>{packet}.first(size));
    EXPECT_FALSE(load_header(cut.span())) << size;
  }
}

TEST(Header, IsRefusedWithAnUnknownType) {
  for (int type = 0; type < 256; ++type) {
    Bytes packet = {static_cast<uint8_t>(type), 1, 0, 1, 0, 0, 0};
    EXPECT_EQ(load_header(packet).has_value(), type == 0 || type == 2 || type == 4) << type;
  }
}

constexpr Element kPastTheEnd[] = {{0x01, kNoOffset, "value", u32(6)}};
constexpr Element kCountPastTheEnd[] = {{0x01, kNoOffset, "l", array(count8_u32(6), u8(0), 4)}};
constexpr Element kValidityPastTheEnd[] = {{0x10, 8, "value", u8(0)}};
constexpr Element kTerminatorPastTheEnd[] = {{0x01, kNoOffset, "text", text8(0, 8)}};
constexpr Element kSplitTlv[] = {
    {0x01, kNoOffset, "a", u8(0)}, {0x02, kNoOffset, "b", u8(1)}, {0x01, kNoOffset, "c", u8(2)}};
constexpr Element kTwoValidities[] = {{0x10, 0, "a", u8(1)}, {0x10, 2, "b", u8(3)}};
constexpr Element kInside[] = {{0x01, kNoOffset, "value", u32(4)}, {0x10, 0, "b", u8(1)}};

bool consistent(std::span<const Element> elements) {
  return is_consistent(Message{1, Direction::request, "probe", 8, elements});
}

TEST(Consistency, IsFoundInATableInsideItsStructure) { EXPECT_TRUE(consistent(kInside)); }

TEST(Consistency, IsNotFoundWithElementsPastTheEndOfTheStructure) {
  EXPECT_FALSE(consistent(kPastTheEnd));
  EXPECT_FALSE(consistent(kCountPastTheEnd));
  EXPECT_FALSE(consistent(kValidityPastTheEnd));
  EXPECT_FALSE(consistent(kTerminatorPastTheEnd));
}

TEST(Consistency, IsNotFoundWithSplitTlvs) {
  EXPECT_FALSE(consistent(kSplitTlv));
  EXPECT_FALSE(consistent(kTwoValidities));
}

TEST(Consistency, OfAServiceRequiresThatOfAllItsMessages) {
  static constexpr Message kMessages[] = {{1, Direction::request, "good", 8, kInside},
                                          {2, Direction::request, "bad", 8, kPastTheEnd}};
  EXPECT_FALSE(is_consistent(Service{"probe", 1, 1, kMessages}));
  EXPECT_TRUE(is_consistent(Service{"probe", 1, 1, std::span(kMessages).first(1)}));
}

}  // namespace
}  // namespace codec_test
