// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/compare.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/qmi_samples.h"

namespace qorextctl {
namespace {

constexpr uint32_t kNvRead = 0x02000016;

// The reply to nv-read: item, record, offset, length, content.
DecodedFrame reply(uint32_t item, const Bytes& content, uint32_t status = 0) {
  Bytes data = element_address(item, static_cast<uint32_t>(content.size()));
  data.insert(data.end(), content.begin(), content.end());
  return decode_as(FrameKind::reply, cdma_frame(kNvRead, status, data));
}

using Texts = std::vector<std::string>;

Texts differences(const Comparable& expected, const Comparable& got) {
  Texts texts;
  for (const Difference& found : compare(expected, got)) {
    texts.push_back(found.field + " " + found.expected.dump() + " " + found.got.dump());
  }
  return texts;
}

Texts differences(const DecodedFrame& expected, const DecodedFrame& got,
                  bool show_personal = false) {
  return differences(comparable(expected, show_personal), comparable(got, show_personal));
}

TEST(Compare, FindsNothingBetweenEqualFrames) {
  EXPECT_EQ(differences(reply(kMobPRev, {6}), reply(kMobPRev, {6})), Texts{});
}

TEST(Compare, ReportsTheFieldThatDiffers) {
  EXPECT_EQ(differences(reply(kMobPRev, {6}), reply(kMobPRev, {7})),
            Texts{R"(fields.data "06" "07")"});
  EXPECT_EQ(differences(reply(kMobPRev, {6}), reply(kMobPRev, {6}, 5)), Texts{"status 0 5"});
}

TEST(Compare, ReportsAllFieldsThatDiffer) {
  EXPECT_EQ(differences(reply(kMobPRev, {6}), reply(29, {6, 7})),
            (Texts{"length 17 18", "fields.rde_id 28 29", "fields.length 1 2",
                   R"(fields.data "06" "0607")"}));
}

TEST(Compare, MasksPersonalValuesThatDiffer) {
  EXPECT_EQ(differences(reply(kMin1, {6}), reply(kMin1, {7})), Texts{R"(fields.data "***" "***")"});
  EXPECT_EQ(differences(reply(kMin1, {6}), reply(kMin1, {7}), true),
            Texts{R"(fields.data "06" "07")"});
}

TEST(Compare, ReportsTheBytesWhenAllFieldsAreEqual) {
  DecodedFrame expected = reply(kMobPRev, {6});
  DecodedFrame got = expected;
  got.frame.back() = 1;
  auto found = compare(comparable(expected, false), comparable(got, false));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].field, "hex");
  EXPECT_EQ(found[0].got, to_hex(got.frame));
}

TEST(Compare, ReportsTheIndexInAList) {
  Json expected = {{"pairs", {{{"sid", 1}}, {{"sid", 2}}}}};
  Json got = {{"pairs", {{{"sid", 1}}, {{"sid", 3}}}}};
  EXPECT_EQ(differences(Comparable{expected, expected}, Comparable{got, got}),
            Texts{"pairs[1].sid 2 3"});
}

TEST(Compare, ReportsFieldsOfOneSideOnly) {
  Json one = {{"a", 1}, {"b", 2}};
  Json other = {{"a", 1}, {"c", 3}};
  EXPECT_EQ(differences(Comparable{one, one}, Comparable{other, other}),
            (Texts{"b 2 null", "c null 3"}));
}

TEST(Compare, IgnoresTheTransactionOfMessages) {
  MessageReader reader;
  auto message = [&](const Bytes& packet) {
    return comparable(*reader.read("qorext", 1, packet), false);
  };
  EXPECT_EQ(differences(message(read_request(1, kMobPRev)), message(read_request(2, kMobPRev))),
            Texts{});
  EXPECT_EQ(differences(message(read_request(1, kMobPRev)), message(read_request(1, 29))),
            Texts{"fields.rde_id 28 29"});
}

}  // namespace
}  // namespace qorextctl
