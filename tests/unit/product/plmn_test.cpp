// SPDX-License-Identifier: Apache-2.0
// The data PLMN record and the operator name of a PLMN.
#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;

namespace plmn_test {

constexpr uint32_t kDataPlmn = 0x60001;
constexpr unsigned int QMI_DATA_PLMN_REQ_V01 = 0x16;

class DataPlmn : public ServingPhone {};

TEST_F(DataPlmn, RecordIsSentWithoutAHeader) {
  Bytes record = numbered(568);
  answer(QMI_DATA_PLMN_REQ_V01, record);
  ask(Request::generic(kDataPlmn));
  EXPECT_EQ(trace,
            (Lines{"send vendor 0x16", "log: Dumping modem response for QMI_DATA_PLMN_REQ_V01...",
                   "log: HexDump: Data " + hex(record), "reply: " + hex(record)}));
}

TEST_F(DataPlmn, RequestIsIgnored) {
  ask(generic_claiming(0xFFFFFFFF, kDataPlmn, numbered(40)));
  EXPECT_EQ(sent().request, Bytes(4));
  EXPECT_EQ(sent().response_length, 568u);
}

TEST_F(DataPlmn, FailedSendGetsZeros) {
  fail_send(QMI_DATA_PLMN_REQ_V01, -3);
  answer(QMI_DATA_PLMN_REQ_V01, numbered(568));
  ask(Request::generic(kDataPlmn));
  EXPECT_EQ(trace, (Lines{"send vendor 0x16", "log: Sending QMI_DATA_PLMN_REQ_V01 failed!",
                          "reply: " + hex(Bytes(568))}));
}

constexpr uint32_t kOperatorName = 0xA0006;
constexpr unsigned int GET_PLMN_NAME_REQ_MSG_V01 = 0x44;
constexpr size_t kNameRoom = 3944 - 52;

struct Answer {
  Bytes name;
  uint32_t stated_length;
  uint8_t valid = 1;
  uint32_t coding = 0;
  uint32_t result = 0;
  uint32_t error = 0;
};

Answer named(const Bytes& name) { return {name, static_cast<uint32_t>(name.size())}; }
Answer named(const std::string& name) { return named(text(name)); }

// The bytes between the values are not zero.
Bytes record(const Answer& a) {
  return le32(a.result) + le32(a.error) + Bytes{a.valid} + Bytes(27, 0xEE) + le32(a.coding) +
         Bytes(8, 0xEE) + le32(a.stated_length) + a.name;
}

const Lines kDump = {"log: Dumping modem response for GET_PLMN_NAME_REQ_MSG_V01...",
                     "log: HexDump=buffer overflow"};

class OperatorName : public ServingPhone {
 protected:
  // Requests the name of 310 260 and returns the trace after the lines of the exchange.
  Lines trace_of(const Answer& given) {
    answer(GET_PLMN_NAME_REQ_MSG_V01, record(given));
    ask(Request::generic(kOperatorName, le16(310) + le16(260)));
    EXPECT_THAT(Lines(trace.begin(), trace.begin() + 4),
                ElementsAre("log: Received request len = 4, mcc = 310, mnc = 260", "send nas 0x44",
                            "log: Response = " + std::to_string(given.result) +
                                ", Error code = " + std::to_string(given.error),
                            "log: EONS plmn name valid = " + std::to_string(given.valid)));
    return {trace.begin() + 4, trace.end()};
  }

  static Lines answered(const Bytes& data) {
    return {"log: Sending OnRequest Complete", "reply: " + generic_answer(kOperatorName, data)};
  }

  // What trace_of() returns for a name, and without one.
  static Lines name_lines(const std::string& name, const Lines& notices = {}) {
    return kDump + notices + Lines{"log: plmn short name is 7-bit Unpacked data " + name} +
           answered(text(name));
  }
  static Lines no_name_lines(const Lines& notices) {
    return kDump + notices + Lines{"log: Invalid or Empty string received from modem"} +
           answered({5});
  }
};

TEST_F(OperatorName, RequestSendsMccAndMncForTheStaticTable) {
  ask(Request::generic(kOperatorName, from_hex("3601 0401 EE")));
  EXPECT_EQ(sent().service, "nas");
  EXPECT_EQ(sent().request, from_hex("3601 0401 01 01 0000 00 00 01 01 00") + Bytes(19));
  EXPECT_EQ(sent().request.size(), 32u);
  EXPECT_EQ(sent().response_length, 3944u);
  EXPECT_EQ(sent().timeout_ms, 15000u);
}

TEST_F(OperatorName, MccAndMncAreReadForAnyLengthInTheHeader) {
  const struct {
    uint32_t length;
    const char* line;
  } kRows[] = {
      {0, "log: Received request len = 0, mcc = 65535, mnc = 32768"},
      {3, "log: Received request len = 3, mcc = 65535, mnc = 32768"},
      {0xFFFFFFFF, "log: Received request len = -1, mcc = 65535, mnc = 32768"},
  };
  for (const auto& row : kRows) {
    ask(generic_claiming(row.length, kOperatorName, from_hex("FFFF 0080")));
    EXPECT_EQ(trace.front(), row.line);
    EXPECT_EQ(Bytes(sent().request.begin(), sent().request.begin() + 4), from_hex("FFFF 0080"));
  }
}

TEST_F(OperatorName, NameIsSentInUtf8) {
  EXPECT_EQ(trace_of(named("Telco")), name_lines("Telco"));
  EXPECT_EQ(trace_of(named(from_hex("02 41 10 00"))), name_lines("$A\u0394@"));
}

TEST_F(OperatorName, NameWithTheCodeZeroIsNotCut) {
  EXPECT_EQ(trace_of(named(from_hex("41 00 42"))), name_lines("A@B"));
}

TEST_F(OperatorName, BytesOf80HexAndMoreAreCopied) {
  EXPECT_EQ(trace_of(named("T\xC3\xA9l\xE9\xFF")), name_lines("T\xC3\xA9l\xE9\xFF"));
}

TEST_F(OperatorName, ModemsResultIsIgnored) {
  Answer given = named("Telco");
  given.result = 1;
  given.error = 48;
  EXPECT_EQ(trace_of(given), name_lines("Telco"));
}

TEST_F(OperatorName, FailedSendGetsStatusFive) {
  fail_send(GET_PLMN_NAME_REQ_MSG_V01, -3);
  Answer given = named("Telco");
  given.result = 1;
  given.error = 3;
  EXPECT_EQ(trace_of(given),
            Lines{"log: Sending GET_PLMN_NAME_REQ_MSG_V01 failed!"} + answered({5}));
}

TEST_F(OperatorName, OtherValidityOrCodingGetsStatusFive) {
  std::vector<Answer> rows;
  for (uint8_t valid : Bytes{0, 2, 255}) rows.push_back({text("Telco"), 5, valid});
  for (uint32_t coding : {1u, 2u, 0x100u, 0xFFFFFFFFu})
    rows.push_back({text("Telco"), 5, 1, coding});
  for (const Answer& row : rows) {
    EXPECT_EQ(trace_of(row),
              kDump + Lines{"log:  plmn_resp.eons_plmn_name_3gpp_valid is FALSE!"} + answered({5}));
  }
}

TEST_F(OperatorName, EmptyNameGetsStatusFive) {
  EXPECT_EQ(trace_of(named("")),
            no_name_lines({"log: Invalid parameters for GSM alphabet to UTF8 conversion, "
                           "input len = 0"}));
}

TEST_F(OperatorName, NameOfOnlyCarriageReturnsGetsStatusFive) {
  EXPECT_EQ(trace_of(named("\r\r")), no_name_lines({"debug: ignored CR charecter at index = 0",
                                                    "debug: ignored CR charecter at index = 1"}));
}

TEST_F(OperatorName, CarriageReturnsInsideANameAreDropped) {
  EXPECT_EQ(trace_of(named("A\rB")),
            name_lines("AB", {"debug: ignored CR charecter at index = 1"}));
}

TEST_F(OperatorName, LengthHas16Bits) {
  EXPECT_EQ(trace_of({text("Telco"), 0x10003}), name_lines("Tel"));
  EXPECT_EQ(trace_of({text("Telco"), 0x10000}),
            no_name_lines({"log: Invalid parameters for GSM alphabet to UTF8 conversion, "
                           "input len = 0"}));
}

TEST_F(OperatorName, LengthBeyondTheNameReadsZerosWhichAreAtSigns) {
  EXPECT_EQ(trace_of({text("AB"), 4}), name_lines("AB@@"));
}

TEST_F(OperatorName, ReplyHoldsAtMost512Bytes) {
  const struct {
    size_t length;
    uint8_t code;  // 0x10 takes two bytes in UTF-8
    std::string unit;
    size_t units;  // in the reply
  } kRows[] = {
      {255, 'a', "a", 255},       {511, 'a', "a", 511},
      {512, 'a', "a", 512},       {513, 'a', "a", 512},
      {256, 0x10, "\u0394", 256}, {257, 0x10, "\u0394", 256},
      {kNameRoom, 'a', "a", 512}, {kNameRoom, 0x10, "\u0394", 256},
  };
  for (const auto& row : kRows) {
    trace_of(named(Bytes(row.length, row.code)));
    std::string name;
    for (size_t i = 0; i < row.units; ++i) name += row.unit;
    EXPECT_THAT(replies(), ElementsAre(generic_answer(kOperatorName, text(name)))) << row.length;
  }
}

TEST_F(OperatorName, NameWithoutMemoryForItsReplyIsLost) {
  allocations_left = 0;
  Lines lost = name_lines("Telco");
  lost.pop_back();
  EXPECT_EQ(trace_of(named("Telco")), lost);
}

TEST_F(OperatorName, LengthBeyondTheRecordReadsNothingAfterIt) {
  for (uint32_t length : {uint32_t{kNameRoom} + 1, 0xFFFFu, 0xFFFFFFFFu}) {
    trace_of({Bytes(kNameRoom, 'a'), length});
    EXPECT_THAT(replies(), ElementsAre(generic_answer(kOperatorName, Bytes(512, 'a')))) << length;
    std::string name = "plmn short name is 7-bit Unpacked data ";
    if (length == kNameRoom + 1) {
      EXPECT_THAT(logs(), testing::Contains(name + std::string(kNameRoom, 'a')));
    }
  }
}

}  // namespace plmn_test
