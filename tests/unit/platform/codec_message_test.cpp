// SPDX-License-Identifier: Apache-2.0
// Properties of every message of the three services.
#include "tests/unit/platform/codec_support.h"

namespace codec_test {
namespace {

constexpr unsigned kRounds = 50;

class EveryMessage : public testing::TestWithParam<Case> {
 protected:
  const qmi_idl::Message& message() const { return *GetParam().message; }
};

// Marks the ends of TLVs. A message that is cut anywhere else is invalid.
std::vector<bool> boundaries(const Bytes& wire) {
  std::vector<bool> ends(wire.size() + 1);
  size_t at = 0;
  while (at <= wire.size()) {
    ends[at] = true;
    if (at == wire.size()) break;
    at += 3 + wire[at + 1] + 256u * wire[at + 2];
  }
  return ends;
}

TEST_P(EveryMessage, IsDecodedToWhatWasEncoded) {
  for (unsigned seed = 0; seed < kRounds; ++seed) {
    Bytes structure = RandomMessage(seed).make(message());
    Bytes wire = encoded(message(), structure);
    Bytes decoded(message().size, 0xEE);
    ASSERT_TRUE(qmi_idl::decode(message(), wire, decoded)) << "seed " << seed;
    ASSERT_EQ(decoded, structure) << "seed " << seed;
  }
}

TEST_P(EveryMessage, IsRefusedWhenCutInsideATlv) {
  Bytes wire = encoded(message(), RandomMessage(7).make(message()));
  std::vector<bool> ends = boundaries(wire);
  for (size_t size = 0; size < wire.size(); ++size) {
    ExactBuffer cut(std::span<const uint8_t>{wire}.first(size));
    ExactBuffer structure(message().size);
    bool decoded = qmi_idl::decode(message(), cut.span(), structure.span());
    ASSERT_TRUE(ends[size] || !decoded) << "cut at " << size;
  }
}

TEST_P(EveryMessage, IsNotEncodedIntoASmallerBuffer) {
  Bytes structure = RandomMessage(8).make(message());
  size_t needed = encoded(message(), structure).size();
  for (size_t room = 0; room < needed; ++room) {
    ExactBuffer wire(room);
    ASSERT_EQ(qmi_idl::encode(message(), structure, wire.span()), -1) << "room " << room;
  }
}

TEST_P(EveryMessage, RequiresAStructureOfItsOwnSize) {
  Bytes wire(kWireRoom);
  Bytes larger(message().size + 1u);
  EXPECT_EQ(qmi_idl::encode(message(), larger, wire), -1);
  EXPECT_FALSE(qmi_idl::decode(message(), {}, larger));
}

TEST_P(EveryMessage, IsRefusedWithoutAMandatoryTlv) {
  Bytes structure(message().size);
  Bytes wire = encoded(message(), structure);
  bool has_mandatory = false;
  for (const auto& element : message().elements) {
    has_mandatory |= element.valid_offset == qmi_idl::kNoOffset;
  }
  EXPECT_EQ(qmi_idl::decode(message(), {}, structure), !has_mandatory);
  EXPECT_EQ(wire.empty(), !has_mandatory);
}

TEST_P(EveryMessage, IsDecodedSafelyFromCorruptBytes) {
  for (unsigned round = 0; round < 2 * kRounds; ++round) {
    Bytes wire = encoded(message(), RandomMessage(round).make(message()));
    if (wire.empty()) return;
    std::mt19937 random(round);
    for (unsigned change = 0; change < 4; ++change) {
      wire[random() % wire.size()] = static_cast<uint8_t>(random());
    }
    ExactBuffer corrupt(wire);
    ExactBuffer structure(message().size);
    if (qmi_idl::decode(message(), corrupt.span(), structure.span())) {
      Bytes room(kWireRoom);
      ASSERT_GE(qmi_idl::encode(message(), structure.span(), room), 0);
    }
    if (message().size > 4096 && round >= kRounds) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryMessage, testing::ValuesIn(all_messages()), name_of);

TEST(Services, AreReturnedOnlyForTheirOwnVersions) {
  EXPECT_EQ(nas_get_service_object_internal_v01(1, 174, 6), nullptr);
  EXPECT_EQ(dms_get_service_object_internal_v01(2, 56, 6), nullptr);
  EXPECT_EQ(qorext_vs_get_service_object_internal_v01(1, 1, 5), nullptr);
  EXPECT_EQ(nas().id, 3u);
  EXPECT_EQ(dms().id, 2u);
}

TEST(Services, FindTheirMessagesByIdAndDirection) {
  using qmi_idl::Direction;
  ASSERT_NE(qmi_idl::find(qorext(), Direction::indication, 0x0F), nullptr);
  EXPECT_EQ(qmi_idl::find(qorext(), Direction::indication, 0x0F)->size, 520);
  EXPECT_EQ(qmi_idl::find(qorext(), Direction::request, 0x0F)->size, 264);
  EXPECT_EQ(qmi_idl::find(qorext(), Direction::request, 0x999), nullptr);
  EXPECT_EQ(qmi_idl::find(dms(), Direction::indication, 0x52), nullptr);
}

}  // namespace
}  // namespace codec_test
