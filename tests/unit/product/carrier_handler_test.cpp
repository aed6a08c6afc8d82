// SPDX-License-Identifier: Apache-2.0
// The carrier's handler: declined requests, messages to the modem, the list of APNs, its replies.
#include "src/carrier/carrier_handler.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace carrier_handler_test {

const std::string kCode = "ABCDEF";
const Bytes kAddress = le32(4711) + le32(1) + le32(2);

class CarrierHandler : public CarrierPhone {};

TEST_F(CarrierHandler, NullRequestCountsAsServed) {
  EXPECT_EQ(qorext_hook_sprint_handler(nullptr, 0xFFFFFFFF), 0u);
  EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                 "log: qorext_hook_sprint_handler: p_hdr == NULL "));
}

TEST_F(CarrierHandler, IdsWithoutARowAreDeclined) {
  std::vector<uint32_t> ids = {0x02000005, 0x02000006, 0x02000008, 0x02000009, 0x02000014,
                               0x02000000, 0x02000017, 0x020000AF, 0x020000CC, 0x000000B0,
                               0xFFFFFFFF, 0x01000007, 0x030000B0};
  for (uint32_t id = 0x0200000B; id <= 0x02000010; ++id) ids.push_back(id);
  for (uint32_t id : ids) {
    EXPECT_EQ(offer(Request::cdma(id, Bytes(4))), 0xFFFFFFFF) << std::hex << id;
    EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                   "log: qorext_hook_sprint_handler: Unexpected MSG ID: " +
                                       std::to_string(static_cast<int32_t>(id))));
  }
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(CarrierHandler, EmptySettingIsRefusedWithoutAReplyAfterItsFirstLine) {
  for (uint32_t id : {0x020000B1u, 0x020000B3u, 0x020000B4u, 0x020000B5u}) {
    EXPECT_EQ(offer(Request::cdma(id)), 0xFFFFFFFF);
    EXPECT_THAT(trace,
                ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                            "log: qorext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE " +
                                std::to_string(id) + " "));
  }
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(CarrierHandler, EmptyProtectedRequestIsRefusedWithoutAReplyBeforeItsFirstLine) {
  for (uint32_t id : {0x02000002u, 0x02000004u}) {
    EXPECT_EQ(offer(Request::cdma(id)), 0xFFFFFFFF);
    EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER "));
  }
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(CarrierHandler, RefusedRequestGetsOnlyTheStatusSixReply) {
  for (uint32_t id :
       {0x020000B1u, 0x020000B3u, 0x020000B4u, 0x020000B5u, 0x02000002u, 0x02000004u}) {
    ask_cdma(Request::cdma(id));
    EXPECT_THAT(replies(), ElementsAre(reply(id, 6)));
  }
}

TEST_F(CarrierHandler, FactoryResetWithoutExactlyOneBytePasses255) {
  for (const Bytes& payload : {Bytes{}, Bytes{3, 4}, Bytes{3}}) {
    offer(Request::cdma(0x020000B6, payload));
    uint8_t flag = payload.size() == 1 ? 3 : 255;
    EXPECT_EQ(exchanges.back().request, Bytes{flag}) << payload.size();
  }
}

TEST_F(CarrierHandler, ReadReplyForFourBytesHasLength24AndIs44BytesLong) {
  items[4711] = numbered(4);
  offer(Request::cdma(0x02000016, kAddress));
  ASSERT_EQ(replies().size(), 1u);
  EXPECT_EQ(replies()[0].size(), 2u * 44);
  EXPECT_EQ(load_le32(from_hex(replies()[0]).data() + 4), 24u);
}

TEST_F(CarrierHandler, ReadReplyIsCutToTheSizeOfTheResponse) {
  answer(8, read_answer(1, 1024, numbered(512)));
  offer(Request::cdma(0x02000016, kAddress));
  EXPECT_THAT(replies(),
              ElementsAre(reply(0x02000016, 0, kAddress + le32(512) + numbered(512) + Bytes(4))));
  offer(Request::cdma(0x020000BE));
  EXPECT_THAT(replies(), ElementsAre(reply(0x020000BE, 0, numbered(512))));
}

TEST_F(CarrierHandler, ObsoleteRequestGetsTwentyBytes) {
  offer(Request::cdma(0x020000BB));
  EXPECT_THAT(replies(), ElementsAre(hex(le32(0x020000BB) + le32(0) + le32(6) + Bytes(8))));
}

TEST_F(CarrierHandler, FailedWriteOfAReplyStillCountsAsServed) {
  write_errnos = {EPIPE};
  EXPECT_EQ(offer(Request::cdma(0x020000BB)), 0u);
  EXPECT_EQ(trace.back(), "log: Write to parent failed 32");
}

// The one message that a request sends to the modem.
struct Asked : NamedRow {
  uint32_t id;
  Bytes payload;
  unsigned int message;
  Bytes request;
};

class CarrierAsks : public CarrierPhone, public testing::WithParamInterface<Asked> {};

TEST_P(CarrierAsks, SendsTheMessageOfItsRow) {
  offer(Request::cdma(GetParam().id, GetParam().payload).with_code(kCode));
  ASSERT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].id, GetParam().message);
  EXPECT_EQ(hex(exchanges[0].request), hex(GetParam().request));
}

Bytes element(const Bytes& address, const Bytes& data) {
  auto length = static_cast<uint32_t>(data.size());
  return address + le32(length) + le32(length) + data + Bytes(512 - data.size());
}

const Bytes kMinusTwo = le32(0xFFFFFFFE);
const Bytes kRest(8);  // record 0, offset 0

// clang-format off
const Asked kAsked[] = {
    {"Bc10",           0x020000B0, {}, 0x101, le32(0)},
    {"SetBc10",        0x020000B1, kMinusTwo, 0x102, le32(0) + kMinusTwo},
    {"Bc14",           0x020000B2, {}, 0x101, le32(1)},
    {"SetBc14",        0x020000B3, kMinusTwo, 0x102, le32(1) + kMinusTwo},
    {"RoamingList",    0x020000B4, le32(3) + numbered(4), 0x100, le32(3) + numbered(3) + Bytes(16381)},
    {"WholeList",      0x020000B4, le32(16384) + numbered(16384), 0x100, le32(16384) + numbered(16384)},
    {"OverlongList",   0x020000B4, le32(20000) + numbered(17386), 0x100, le32(16384) + numbered(16384)},
    {"Profile",        0x020000B5, kMinusTwo, 0x103, kMinusTwo},
    {"Ddtm",           0x020000B7, {}, 8, element(le32(10018) + kRest, {})},
    {"SetDdtm",        0x020000B8, {7, 8}, 9, element(le32(10018) + kRest, {7})},
    {"SecondDdtm",     0x020000B9, {}, 8, element(le32(10018) + kRest, {})},
    {"SetSecondDdtm",  0x020000BA, {7, 8}, 9, element(le32(10018) + kRest, {7})},
    {"BsrTimer",       0x020000BC, {}, 0x108, {}},
    {"SetBsrTimer",    0x020000BD, kMinusTwo, 0x109, kMinusTwo},
    {"LteOption",      0x020000BE, {}, 8, element(le32(10017) + kRest, {})},
    {"SetLteOption",   0x020000BF, numbered(9), 9, element(le32(10017) + kRest, numbered(9))},
    {"Longest",        0x020000BF, numbered(512), 9, element(le32(10017) + kRest, numbered(512))},
    {"Apns",           0x020000C1, {}, 0x106, {}},
    {"TotOrder",       0x020000C4, {}, 0x104, {}},
    {"NoTotOrder",     0x020000C5, le16(0) + numbered(60), 0x105, Bytes(68)},
    {"SetTotOrder",    0x020000C5, le16(2) + numbered(60), 0x105, le16(2) + Bytes(6) + numbered(8) + Bytes(52)},
    {"WholeTotOrder",  0x020000C5, le16(15) + numbered(60), 0x105, le16(15) + Bytes(6) + numbered(60)},
    {"MobPRev",        0x02000007, {}, 8, element(le32(28) + kRest, {})},
    {"SubsidyLock",    0x0200000A, numbered(6), 0x3B, text(kCode)},
    {"CallProcessing", 0x02000011, {}, 0x10, le32(0)},
    {"Evdo",           0x02000012, {}, 0x10, le32(1)},
    {"Akey",           0x02000013, numbered(26), 0x5B, text(kCode) + numbered(26)},
    {"Write",          0x02000015, kAddress + le32(3) + numbered(4), 9, element(kAddress, numbered(3))},
    {"Read",           0x02000016, kAddress + le32(99), 8, element(kAddress, {})},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Row, CarrierAsks, testing::ValuesIn(kAsked), kNameOfRow);

// The list of active APNs.
class CarrierApns : public CarrierPhone {
 protected:
  static constexpr size_t kEntries = 8;

  static Bytes entry(uint8_t i) {
    return le32(0x01020300U + i) + le32(0x0A0B0C00U + i) + Bytes(12, 0xEE) + Bytes(103, i) +
           Bytes(5, 0xEE) + Bytes(16, static_cast<uint8_t>(0x40 + i));
  }
  static Bytes record(uint8_t i) {
    return Bytes(103, i) + le32(0x01020300U + i) + Bytes{0x0A, 0x0B, 0x0C, i} +
           Bytes(16, static_cast<uint8_t>(0x40 + i));
  }
  // The reply to a list with these bytes of the count and eight filled entries.
  std::string apns(uint8_t low, uint8_t high) {
    Bytes list = Bytes(8) + Bytes{low, high} + Bytes(6);
    for (uint8_t i = 1; i <= kEntries; ++i) list = list + entry(i);
    answer(0x106, list);
    offer(Request::cdma(0x020000C1));
    return replies().at(0);
  }
  static std::string list_of(uint8_t count, size_t filled) {
    Bytes data = {count};
    for (uint8_t i = 1; i <= filled; ++i) data = data + record(i);
    data.resize(1017);
    return reply(0x020000C1, 0, data);
  }
};

TEST_F(CarrierApns, CountIsTheNumberOfFilledRecords) {
  for (uint8_t count = 1; count <= kEntries; ++count) {
    EXPECT_EQ(apns(count, 1), list_of(count, count)) << int{count};
  }
}

TEST_F(CarrierApns, RecordsNeedAHighByteAndACount) {
  EXPECT_EQ(apns(3, 0), list_of(3, 0));
  EXPECT_EQ(apns(0, 1), list_of(0, 0));
  EXPECT_EQ(apns(0, 0), list_of(0, 0));
  EXPECT_EQ(apns(3, 0x80), list_of(3, 3));
}

TEST_F(CarrierApns, CountBeyondTheListFillsAllEightRecords) {
  EXPECT_EQ(apns(200, 1), list_of(200, kEntries));
}

const std::string kSend = "log: qorext_hook_sprint_send_response: ";

class CarrierReplies : public CarrierPhone {
 protected:
  // A header of twenty bytes with this data length.
  static Bytes header(uint32_t length) {
    return le32(0x020000C0) + le32(length) + le32(5) + text("SECRET") + Bytes{0xA1, 0xA2};
  }
};

TEST_F(CarrierReplies, WithoutDataTheTwentyHeaderBytesGoOutAsTheyStand) {
  EXPECT_EQ(qorext_hook_sprint_send_response(header(0).data(), nullptr), 1u);
  EXPECT_THAT(trace, ElementsAre(kSend + "ENTER FUNCTION 33554624 ",
                                 kSend + "SEND RESPONSE TO APP LAYER Message ID 33554624 ",
                                 kSend + "SEND RESPONSE TO APP LAYER Length 0 ",
                                 kSend + "HEADER ID 33554624 ", "reply: " + hex(header(0))));
}

TEST_F(CarrierReplies, DataLiesFrom18OverTheHeadersLastTwoBytesAndTwoZerosFollow) {
  Bytes data = numbered(5);
  EXPECT_EQ(qorext_hook_sprint_send_response(header(5).data(), data.data()), 1u);
  Bytes expected = header(5);
  expected.resize(18);
  EXPECT_THAT(trace, ElementsAre(kSend + "ENTER FUNCTION 33554624 ",
                                 kSend + "SEND RESPONSE TO APP LAYER Message ID 33554624 ",
                                 kSend + "SEND RESPONSE TO APP LAYER Length 5 ",
                                 kSend + "BYTE ARRAY NOT NULL ", kSend + "HEADER ID 33554624 ",
                                 "reply: " + hex(expected + data + Bytes(2))));
}

TEST_F(CarrierReplies, OneByteOfDataIsFollowedByTwoZeros) {
  uint8_t data = 0x77;
  qorext_hook_sprint_send_response(header(1).data(), &data);
  Bytes expected = header(1);
  expected.resize(18);
  EXPECT_THAT(replies(), ElementsAre(hex(expected + Bytes{0x77, 0, 0})));
}

TEST_F(CarrierReplies, DataOfNoBytesIsNotCopied) {
  uint8_t data = 0x77;
  qorext_hook_sprint_send_response(header(0).data(), &data);
  EXPECT_THAT(replies(), ElementsAre(hex(header(0))));
}

TEST_F(CarrierReplies, LengthWithoutDataAddsZerosAfterTheHeader) {
  qorext_hook_sprint_send_response(header(5).data(), nullptr);
  EXPECT_THAT(replies(), ElementsAre(hex(header(5) + Bytes(5))));
}

TEST_F(CarrierReplies, NullHeaderIsNotSent) {
  uint8_t data = 0x77;
  EXPECT_EQ(qorext_hook_sprint_send_response(nullptr, &data), 0u);
  EXPECT_THAT(replies(), IsEmpty());
}

TEST_F(CarrierReplies, WithoutMemoryNothingIsSent) {
  allocations_left = 0;
  EXPECT_EQ(qorext_hook_sprint_send_response(header(0).data(), nullptr), 0u);
  EXPECT_THAT(trace, ElementsAre(kSend + "ENTER FUNCTION 33554624 "));
}

TEST_F(CarrierReplies, FailedWriteDoesNotChangeTheResult) {
  write_errnos = {EBADF};
  EXPECT_EQ(qorext_hook_sprint_send_response(header(0).data(), nullptr), 1u);
}

TEST(CarrierStatus, OnlyAModemStatusOfFiveHasItsOwnReplyStatus) {
  EXPECT_EQ(status_from_modem(0), 0u);
  EXPECT_EQ(status_from_modem(5), 2u);
  for (uint32_t other : {1u, 2u, 3u, 4u, 6u, 0xFFFFFFFFu}) EXPECT_EQ(status_from_modem(other), 5u);
}

}  // namespace carrier_handler_test
