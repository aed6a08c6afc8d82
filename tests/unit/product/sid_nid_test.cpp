// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace sid_nid_test {

constexpr uint32_t kGetPairs = 0x02000003;
constexpr uint32_t kSetPairs = 0x02000004;

// Twenty pairs with distinct values, in the width of the modem's item or of the parent's record.
Bytes pairs(Bytes (*value)(uint16_t)) {
  Bytes bytes;
  for (unsigned i = 0; i < 20; ++i) {
    bytes = bytes + value(static_cast<uint16_t>(0x8100 + i)) + value(static_cast<uint16_t>(7 * i));
  }
  return bytes;
}
Bytes as_word(uint16_t value) { return le32(value); }

class SidNid : public CarrierPhone {};

const Lines kGetting = {"log: qorext_hook_sprint_handler: ENTER ",
                        "log: qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE 33554435 ",
                        "log: qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE 33554435 ",
                        "log: qorext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  0 "};
const Lines kSetting = {
    "log: qorext_hook_sprint_handler: ENTER ",
    "log: qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE 33554436 ",
    "log: qorext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  0 "};

TEST_F(SidNid, TwentyPairsAreExtendedTo32Bits) {
  items[15] = Bytes{0} + pairs(le16);
  EXPECT_EQ(offer(Request::cdma(kGetPairs)), 0u);
  std::string frame = reply(kGetPairs, 0, pairs(as_word));
  EXPECT_EQ(frame.size(), 2u * 180);
  Lines expected = kGetting + read_lines(15, items[15]) +
                   Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 0 "} +
                   reply_lines(frame);
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

TEST_F(SidNid, FailedReadReturnsZerosAndStatusFive) {
  unreadable = {15};
  offer(Request::cdma(kGetPairs));
  Lines expected = kGetting + failed_read_lines(15) +
                   Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 4 "} +
                   reply_lines(reply(kGetPairs, 5, Bytes(160)));
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

TEST_F(SidNid, FewerThanTwentyPairsArePaddedWithZeros) {
  items[15] = Bytes{0} + le16(1) + le16(2);
  offer(Request::cdma(kGetPairs));
  EXPECT_THAT(replies(), ElementsAre(reply(kGetPairs, 0, le32(1) + le32(2) + Bytes(152))));
}

TEST_F(SidNid, TwentyPairsAreCutTo16BitsAfterTheNamIndex) {
  Bytes payload = pairs([](uint16_t value) { return le16(value) + from_hex("ADDE"); });
  Bytes item = Bytes{0} + pairs(le16);
  EXPECT_EQ(offer(Request::cdma(kSetPairs, payload).with_code("ABCDEF")), 0u);
  EXPECT_THAT(writes(), ElementsAre(Write{15, hex(item)}));
  Lines expected = kSetting + write_lines(15, item) +
                   Lines{"log: qorext_hook_sprint_set_nam_item: WRITE NV VALUE 0 "} +
                   reply_lines(own_header_reply(kSetPairs, 0, "ABCDEF", payload));
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

TEST_F(SidNid, RefusedWriteReturnsStatusFive) {
  unwritable = {15};
  offer(Request::cdma(kSetPairs, Bytes(160)));
  Lines expected = kSetting + failed_write_lines(15, Bytes(81)) +
                   Lines{"log: qorext_hook_sprint_set_nam_item: WRITE NV VALUE 4 "} +
                   reply_lines(reply(kSetPairs, 5));
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

TEST_F(SidNid, PairsAreSetWithoutACodeChangeForAnyCode) {
  offer(Request::cdma(kSetPairs, Bytes(160)).with_code("zzzzzz"));
  EXPECT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].id, 9u);
}

}  // namespace sid_nid_test
