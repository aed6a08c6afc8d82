// SPDX-License-Identifier: Apache-2.0
// Every row of the carrier's two tables: the request, the modem's response, the parent's reply.
#include "src/carrier/carrier_handler.h"

#include "tests/unit/product/carrier_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace carrier_rows_test {

constexpr int kSent = 0;
constexpr int kNotSent = -3;
constexpr uint32_t kOwn = 0;  // the request's own header
constexpr unsigned int kNothing = 0;

const std::string kCode = "ABCDEF";

struct Row : NamedRow {
  uint32_t id;
  Bytes payload;
  unsigned int asked;  // the modem's last message
  int rc;
  Bytes answer;
  uint32_t reply_id;
  uint32_t status;
  Bytes data;

  bool is_answered_twice() const { return id == 0x020000B5 || id == 0x02000013; }
};

Bytes item(const Bytes& data) { return read_answer(77, static_cast<uint32_t>(data.size()), data); }

const Bytes kDone = le32(0);      // a status word
const Bytes kRefused = kRefusal;  // a status word and an error
const Bytes kOutcome = le32(1);   // an outcome word
const Bytes kNoOutcome = Bytes(4) + le32(7);

const Bytes kNam = Bytes(96, '1') + text(kCode) + Bytes(2);  // asks for no new code
const Bytes kTotOrder = le16(2) + numbered(60);
const Bytes kTotAnswer = Bytes(12) + le16(3) + Bytes(6) + numbered(60);
const Bytes kAddress = le32(4711) + le32(1) + le32(2);
const Bytes kReadReply = kAddress + le32(4) + numbered(4) + Bytes(4);
const Bytes kTotReply = le16(3) + numbered(60);
const Bytes kPlmn = Bytes(1104) + from_hex("0100 3601 7800");
const Bytes kLteData = Bytes(4) + from_hex("3601 7800") + Bytes(22);

// clang-format off
const Row kRows[] = {
    {"Bc10IsReported",             0x020000B0, {}, 0x101, kSent,    le32(0) + le32(7), 0x020000B0, 0, le32(7)},
    {"Bc10Refused",            0x020000B0, {}, 0x101, kSent,    le32(1) + le32(7), 0x020000B0, 0, le32(0)},
    {"Bc10NotSent",            0x020000B0, {}, 0x101, kNotSent, le32(0) + le32(7), 0x020000B0, 0, le32(0)},
    {"Bc10IsSet",              0x020000B1, le32(9), 0x102, kSent,    kDone,    kOwn, 0, {}},
    {"Bc10SetRefused",         0x020000B1, le32(9), 0x102, kSent,    kRefused, kOwn, 5, {}},
    {"Bc10SetNotSent",         0x020000B1, le32(9), 0x102, kNotSent, kDone,    kOwn, 5, {}},
    {"Bc14HasTheIdOfBc10", 0x020000B2, {}, 0x101, kSent,    le32(0) + le32(7), 0x020000B0, 0, le32(7)},
    {"Bc14Refused",            0x020000B2, {}, 0x101, kSent,    le32(1) + le32(7), 0x020000B0, 0, le32(0)},
    {"Bc14NotSent",            0x020000B2, {}, 0x101, kNotSent, le32(0) + le32(7), 0x020000B0, 0, le32(0)},
    {"Bc14IsSet",              0x020000B3, le32(9), 0x102, kSent,    kDone,    kOwn, 0, {}},
    {"Bc14SetRefused",         0x020000B3, le32(9), 0x102, kSent,    kRefused, kOwn, 5, {}},
    {"Bc14SetNotSent",         0x020000B3, le32(9), 0x102, kNotSent, kDone,    kOwn, 5, {}},
    {"RoamingListIsSet",       0x020000B4, le32(3) + numbered(3), 0x100, kSent,    kDone,    kOwn, 0, {}},
    {"RoamingListRefused",     0x020000B4, le32(3) + numbered(3), 0x100, kSent,    kRefused, kOwn, 5, {}},
    {"RoamingListNotSent",     0x020000B4, le32(3) + numbered(3), 0x100, kNotSent, kDone,    kOwn, 5, {}},
    {"ProfileIsSwitched",      0x020000B5, le32(4), 0x103, kSent,    kDone,    kOwn, 0, {}},
    {"ProfileRefused",         0x020000B5, le32(4), 0x103, kSent,    kRefused, kOwn, 5, {}},
    {"ProfileNotSent",         0x020000B5, le32(4), 0x103, kNotSent, kDone,    kOwn, 5, {}},
    {"FactoryReset",           0x020000B6, {3}, 0x11, kSent,    {1}, kOwn, 0, {}},
    {"FactoryResetRefused",    0x020000B6, {3}, 0x11, kSent,    {0}, kOwn, 5, {}},
    {"FactoryResetOfTwo",      0x020000B6, {3}, 0x11, kSent,    {2}, kOwn, 5, {}},
    {"FactoryResetNotSent",    0x020000B6, {3}, 0x11, kNotSent, {1}, kOwn, 5, {}},
    {"DdtmIsReported",             0x020000B7, {}, 8, kSent,    item({200}), kOwn, 0, le32(200)},
    {"DdtmRefused",            0x020000B7, {}, 8, kSent,    kRefused,    kOwn, 5, {}},
    {"DdtmNotSent",            0x020000B7, {}, 8, kNotSent, item({200}), kOwn, 5, {}},
    {"DdtmItemTooLong",        0x020000B7, {}, 8, kSent,    item({200, 1}), kOwn, 0, le32(0)},
    {"DdtmIsSet",              0x020000B8, {2}, 9, kSent,    kDone,    kOwn, 0, {}},
    {"DdtmSetRefused",         0x020000B8, {2}, 9, kSent,    kRefused, kOwn, 5, {}},
    {"DdtmSetNotSent",         0x020000B8, {2}, 9, kNotSent, kDone,    kOwn, 5, {}},
    {"SecondDdtmIsReported",       0x020000B9, {}, 8, kSent,    item({200}), kOwn, 0, le32(200)},
    {"SecondDdtmRefused",      0x020000B9, {}, 8, kSent,    kRefused,    kOwn, 5, {}},
    {"SecondDdtmNotSent",      0x020000B9, {}, 8, kNotSent, item({200}), kOwn, 5, {}},
    {"SecondDdtmIsSet",        0x020000BA, {2}, 9, kSent,    kDone,    kOwn, 0, {}},
    {"SecondDdtmSetRefused",   0x020000BA, {2}, 9, kSent,    kRefused, kOwn, 5, {}},
    {"SecondDdtmSetNotSent",   0x020000BA, {2}, 9, kNotSent, kDone,    kOwn, 5, {}},
    {"BsrTimerIsReported",         0x020000BC, {}, 0x108, kSent,    kOutcome + le32(0) + le32(33),   kOwn, 0, le32(33)},
    {"BsrTimerRefused",        0x020000BC, {}, 0x108, kSent,    kNoOutcome + le32(33),           kOwn, 0, le32(0)},
    {"BsrTimerNotSent",        0x020000BC, {}, 0x108, kNotSent, kOutcome + le32(0) + le32(33),   kOwn, 0, le32(0)},
    {"BsrTimerIsSet",          0x020000BD, le32(33), 0x109, kSent,    kOutcome,   kOwn, 0, {}},
    {"BsrTimerSetRefused",     0x020000BD, le32(33), 0x109, kSent,    kNoOutcome, kOwn, 5, {}},
    {"BsrTimerSetNotSent",     0x020000BD, le32(33), 0x109, kNotSent, kOutcome,   kOwn, 5, {}},
    {"LteOptionIsReported",        0x020000BE, {}, 8, kSent,    item(numbered(5)), kOwn, 0, numbered(5)},
    {"LteOptionOfOneByte",     0x020000BE, {}, 8, kSent,    item({9}),         kOwn, 0, {9}},
    {"LteOptionOfNoBytes",     0x020000BE, {}, 8, kSent,    item({}),          kOwn, 0, {}},
    {"LteOptionOf512Bytes",    0x020000BE, {}, 8, kSent,    item(numbered(512)), kOwn, 0, numbered(512)},
    {"LteOptionTooLong",       0x020000BE, {}, 8, kSent,    read_answer(1, 1025, numbered(512)), kOwn, 0, {}},
    {"LteOptionRefused",       0x020000BE, {}, 8, kSent,    kRefused,          kOwn, 5, {}},
    {"LteOptionNotSent",       0x020000BE, {}, 8, kNotSent, item(numbered(5)), kOwn, 5, {}},
    {"LteOptionIsSet",         0x020000BF, numbered(5), 9, kSent,    kDone,    kOwn, 0, {}},
    {"LteOptionSetRefused",    0x020000BF, numbered(5), 9, kSent,    kRefused, kOwn, 5, {}},
    {"LteOptionSetNotSent",    0x020000BF, numbered(5), 9, kNotSent, kDone,    kOwn, 5, {}},
    {"LteOptionSetTooLong",    0x020000BF, numbered(513), kNothing, kSent, {}, kOwn, 5, {}},
    {"LteDataIsReported",          0x020000C0, {}, 0x24, kSent,    kPlmn,    kOwn, 0, kLteData},
    {"LteDataRefused",         0x020000C0, {}, 0x24, kSent,    kRefused, kOwn, 5, {}},
    {"LteDataNotSent",         0x020000C0, {}, 0x24, kNotSent, kPlmn,    kOwn, 5, {}},
    {"ApnsAreReported",            0x020000C1, {}, 0x106, kSent,    {},                       kOwn, 0, Bytes(1017)},
    {"ApnsRefusedDelivered",   0x020000C1, {}, 0x106, kSent,    kRefused + Bytes{4, 0}, kOwn, 0, Bytes{4} + Bytes(1016)},
    {"ApnsNotSent",            0x020000C1, {}, 0x106, kNotSent, {},                       kOwn, 0, Bytes(1017)},
    {"TotOrderIsReported",         0x020000C4, {}, 0x104, kSent,    kTotAnswer, kOwn, 0, kTotReply},
    {"TotRefusedIsDelivered",  0x020000C4, {}, 0x104, kSent,    kRefused + Bytes(4) + le16(3), kOwn, 0, le16(3) + Bytes(60)},
    {"TotOrderNotSent",        0x020000C4, {}, 0x104, kNotSent, {},                       kOwn, 0, Bytes(62)},
    {"TotOrderIsUpdated",      0x020000C5, kTotOrder, 0x105, kSent,    kOutcome,   kOwn, 0, {}},
    {"TotUpdateRefused",       0x020000C5, kTotOrder, 0x105, kSent,    kNoOutcome, kOwn, 5, {}},
    {"TotUpdateNotSent",       0x020000C5, kTotOrder, 0x105, kNotSent, kOutcome,   kOwn, 5, {}},
    {"TotUpdateOf16",          0x020000C5, le16(16) + numbered(64), kNothing, kSent, {}, kOwn, 5, {}},
    {"BbIsObsolete",           0x020000BB, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C2IsObsolete",           0x020000C2, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C3IsObsolete",           0x020000C3, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C6IsObsolete",           0x020000C6, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C7IsObsolete",           0x020000C7, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C8IsObsolete",           0x020000C8, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"C9IsObsolete",           0x020000C9, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"CaIsObsolete",           0x020000CA, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"CbIsObsolete",           0x020000CB, {5, 6}, kNothing, kSent, {}, kOwn, 6, {}},
    {"NamRefused",             0x02000001, {}, 8, kSent,    kRefused, 0x02000001, 5, Bytes(104)},
    {"NamNotSent",             0x02000001, {}, 8, kNotSent, {},       0x02000001, 5, Bytes(104)},
    {"NamIsSet",               0x02000002, kNam, 9, kSent,    kDone,    kOwn, 0, {}},
    {"NamSetRefused",          0x02000002, kNam, 9, kSent,    kRefused, kOwn, 5, {}},
    {"NamSetNotSent",          0x02000002, kNam, 9, kNotSent, kDone,    kOwn, 5, {}},
    {"SidNidPairsAreReported",     0x02000003, {}, 8, kSent,    item({0, 9}), 0x02000003, 0, le32(9) + Bytes(156)},
    {"SidNidPairsRefused",     0x02000003, {}, 8, kSent,    kRefused,     0x02000003, 5, Bytes(160)},
    {"SidNidPairsNotSent",     0x02000003, {}, 8, kNotSent, item({0, 9}), 0x02000003, 5, Bytes(160)},
    {"SidNidPairsAreSet",      0x02000004, numbered(160), 9, kSent,    kDone,    kOwn, 0, {}},
    {"SidNidPairsSetRefused",  0x02000004, numbered(160), 9, kSent,    kRefused, kOwn, 5, {}},
    {"SidNidPairsSetNotSent",  0x02000004, numbered(160), 9, kNotSent, kDone,    kOwn, 5, {}},
    {"MobPRevIsReported",          0x02000007, {}, 8, kSent,    item({6, 7, 8}), 0x02000007, 0, le32(6)},
    {"MobPRevOf1024",          0x02000007, {}, 8, kSent,    read_answer(1, 1024, {6}), 0x02000007, 0, le32(6)},
    {"MobPRevRefused",         0x02000007, {}, 8, kSent,    kRefused,        0x02000007, 5, le32(0)},
    {"MobPRevNotSent",         0x02000007, {}, 8, kNotSent, item({6, 7, 8}), 0x02000007, 5, le32(0)},
    {"SubsidyLockMatches",     0x0200000A, {}, 0x3B, kSent,    kDone,    0x0200000A, 0, Bytes(6)},
    {"SubsidyLockRefused",     0x0200000A, {}, 0x3B, kSent,    kRefused, 0x0200000A, 3, Bytes(6)},
    {"SubsidyLockNotSent",     0x0200000A, {}, 0x3B, kNotSent, kDone,    0x0200000A, 3, Bytes(6)},
    {"CallProcessingIsReported",   0x02000011, {}, 0x10, kSent,    kDone,    0x02000011, 0, Bytes(316)},
    {"CallProcessingRefused",  0x02000011, {}, 0x10, kSent,    kRefused, 0x02000011, 0, Bytes(316)},
    {"CallProcessingNotSent",  0x02000011, {}, 0x10, kNotSent, kDone,    0x02000011, 0, Bytes(316)},
    {"EvdoIsReported",             0x02000012, {}, 0x10, kSent,    kDone,    0x02000012, 0, Bytes(144)},
    {"EvdoRefused",            0x02000012, {}, 0x10, kSent,    kRefused, 0x02000012, 0, Bytes(144)},
    {"EvdoNotSent",            0x02000012, {}, 0x10, kNotSent, kDone,    0x02000012, 0, Bytes(144)},
    {"AkeyIsWritten",          0x02000013, numbered(26), 0x5B, kSent,    kDone,    kOwn, 0, {}},
    {"AkeyRefused",            0x02000013, numbered(26), 0x5B, kSent,    kRefused, kOwn, 5, {}},
    {"AkeyNotSent",            0x02000013, numbered(26), 0x5B, kNotSent, kDone,    kOwn, 5, {}},
    {"AkeyOf25",               0x02000013, numbered(25), kNothing, kSent, {},      kOwn, 5, {}},
    {"AkeyOf27",               0x02000013, numbered(27), kNothing, kSent, {},      kOwn, 5, {}},
    {"AkeyOf282",              0x02000013, numbered(282), kNothing, kSent, {},     kOwn, 5, {}},
    {"ItemIsWritten",          0x02000015, kAddress + le32(3) + numbered(3), 9, kSent,    kDone,    0x02000015, 0, {}},
    {"ItemWriteRefused",       0x02000015, kAddress + le32(3) + numbered(3), 9, kSent,    kRefused, 0x02000015, 5, {}},
    {"ItemWriteNotSent",       0x02000015, kAddress + le32(3) + numbered(3), 9, kNotSent, kDone,    0x02000015, 5, {}},
    {"ItemWriteTooLong",       0x02000015, kAddress + le32(513), kNothing, kSent, {},               0x02000015, 5, {}},
    {"ItemIsRead",             0x02000016, kAddress, 8, kSent, item(numbered(4)), 0x02000016, 0, kReadReply},
    {"ItemReadTooLong",        0x02000016, kAddress + le32(77), 8, kSent, read_answer(1, 1025, {}), 0x02000016, 0, kAddress + Bytes(8)},
    {"ItemReadRefused",        0x02000016, kAddress, 8, kSent,    kRefused,          0x02000016, 5, {}},
    {"ItemReadNotSent",        0x02000016, kAddress, 8, kNotSent, item(numbered(4)), 0x02000016, 5, {}},
};
// clang-format on

Request request_of(const Row& row) { return Request::cdma(row.id, row.payload).with_code(kCode); }

class CarrierRows : public CarrierPhone, public testing::WithParamInterface<Row> {
 protected:
  void SetUp() override {
    answer(GetParam().asked, GetParam().answer);
    fail_send(GetParam().asked, GetParam().rc);
  }

  static std::string expected() {
    const Row& row = GetParam();
    if (row.reply_id != kOwn) return reply(row.reply_id, row.status, row.data);
    Bytes payload = row.payload + Bytes(2);
    return own_header_reply(row.id, row.status, kCode, payload, row.data);
  }
};

TEST_P(CarrierRows, GetsItsReply) {
  uint32_t result = offer(request_of(GetParam()));
  EXPECT_THAT(replies(), ElementsAre(expected()));
  EXPECT_EQ(result, GetParam().is_answered_twice() ? 0xFFFFFFFF : 0u);
  if (GetParam().asked == kNothing) {
    EXPECT_THAT(exchanges, IsEmpty());
  } else {
    EXPECT_THAT(exchanges, Contains(testing::Field(&Exchange::id, GetParam().asked)));
  }
}

TEST_P(CarrierRows, GetsASecondReplyOnlyInTwoRows) {
  ask_cdma(request_of(GetParam()));
  if (GetParam().is_answered_twice()) {
    EXPECT_THAT(replies(), ElementsAre(expected(), reply(GetParam().id, 6)));
  } else {
    EXPECT_THAT(replies(), ElementsAre(expected()));
  }
}

TEST_P(CarrierRows, WithoutMemoryIsDeclined) {
  allocations_left = 0;
  EXPECT_EQ(offer(request_of(GetParam())), 0xFFFFFFFF);
  EXPECT_THAT(replies(), IsEmpty());
  EXPECT_EQ(trace.back(),
            numbered_line("qorext_hook_sprint_send_response: ENTER FUNCTION ",
                          GetParam().reply_id == kOwn ? GetParam().id : GetParam().reply_id)[0]);
}

INSTANTIATE_TEST_SUITE_P(Row, CarrierRows, testing::ValuesIn(kRows), kNameOfRow);

// Four ids are in the fallback table as well: see CarrierFallback.
std::vector<Row> rows_of_the_carrier_only() {
  std::vector<Row> rows;
  std::copy_if(std::begin(kRows), std::end(kRows), std::back_inserter(rows), [](const Row& row) {
    return row.id != 0x02000007 && row.id != 0x0200000A && row.id != 0x02000015 &&
           row.id != 0x02000016;
  });
  return rows;
}

class CarrierOnlyRows : public CarrierRows {};

TEST_P(CarrierOnlyRows, GetStatusSixWithoutMemory) {
  allocations_left = 0;
  ask_cdma(request_of(GetParam()));
  EXPECT_THAT(replies(), ElementsAre(reply(GetParam().id, 6)));
}

INSTANTIATE_TEST_SUITE_P(Row, CarrierOnlyRows, testing::ValuesIn(rows_of_the_carrier_only()),
                         kNameOfRow);

// Memory is available again when the fallback sends its message.
class CarrierFallback : public CarrierPhone {
 protected:
  std::string answer_of_fallback(Request request) {
    allocations_left = 0;
    modem = [this, by_item = modem](const Exchange& exchange, std::span<uint8_t> response) {
      if (exchanges.size() == 2) allocations_left = -1;
      return by_item(exchange, response);
    };
    ask_cdma(std::move(request));
    EXPECT_EQ(replies().size(), 1u);
    return replies().empty() ? "" : replies()[0];
  }
};

TEST_F(CarrierFallback, MobPRevHasFourBytesOfTheItem) {
  items[28] = {6, 7, 8, 9, 10};
  EXPECT_EQ(answer_of_fallback(Request::cdma(0x02000007)), reply(0x02000007, 0, {6, 7, 8, 9}));
}

TEST_F(CarrierFallback, CodeIsComparedWithTheItem) {
  items[32] = text("123456");
  EXPECT_EQ(answer_of_fallback(Request::cdma(0x0200000A, text("123456"))), reply(0x0200000A, 0));
}

TEST_F(CarrierFallback, ItemIsWrittenAgain) {
  Bytes payload = kAddress + le32(1) + Bytes{5};
  EXPECT_EQ(answer_of_fallback(Request::cdma(0x02000015, payload)), reply(0x02000015, 0));
  EXPECT_THAT(writes(), ElementsAre(Write{4711, "05"}, Write{4711, "05"}));
}

TEST_F(CarrierFallback, ItemIsReadWithTheModemsAddress) {
  items[4711] = {5};
  EXPECT_EQ(answer_of_fallback(Request::cdma(0x02000016, kAddress)),
            reply(0x02000016, 0, le32(4711) + le32(7) + le32(8) + le32(1) + Bytes{5} + Bytes(4)));
}

}  // namespace carrier_rows_test
