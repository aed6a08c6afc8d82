// SPDX-License-Identifier: Apache-2.0
// The two engineering records: the modem's hexadecimal text and the parent's 32-bit fields.
#include "tests/unit/product/carrier_phone.h"

using testing::Contains;
using testing::ElementsAreArray;

namespace engineering_test {

constexpr uint32_t kCallProcessingId = 0x02000011;
constexpr uint32_t kEvdoId = 0x02000012;

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(tolower(c));
  return text;
}

class Engineering : public CarrierPhone {
 protected:
  void answer_text(const std::string& characters, size_t claimed) {
    answer(0x10,
           le32(0) + le32(0xEEEEEEEE) + le32(static_cast<uint32_t>(claimed)) + text(characters));
  }
  void answer_text(const std::string& characters) { answer_text(characters, characters.size()); }

  // The data of the reply to this text.
  Bytes data_of(uint32_t id, size_t size) {
    EXPECT_EQ(offer(Request::cdma(id)), 0u);
    Bytes frame = from_hex(replies().at(0));
    EXPECT_EQ(hex({frame.data(), 18}),
              hex(le32(id) + le32(static_cast<uint32_t>(size)) + Bytes(10)));
    EXPECT_EQ(frame.size(), size + 20);
    return Bytes(frame.begin() + 18, frame.end() - 2);
  }
  Bytes call_processing(const Bytes& record) {
    answer_text(hex(record));
    return data_of(kCallProcessingId, 316);
  }
  Bytes evdo(const Bytes& record) {
    answer_text(hex(record));
    return data_of(kEvdoId, 144);
  }
};

// A record without equal 16-bit values, in which every byte has its top bit set.
Bytes distinct_record(size_t size) {
  Bytes record(size);
  for (size_t i = 0; i < size; ++i) {
    record[i] = static_cast<uint8_t>(0x80 | (i % 2 == 0 ? i / 2 : i / 2 + 61));
  }
  return record;
}

// The source of a field of the reply.
struct Source {
  size_t reply_offset;
  enum { k8Bits = 1, k16Bits = 2, k32Bits = 4 } width;
  size_t at;
  size_t count = 1;  // of consecutive values
};
constexpr size_t kHigh = 2;  // the upper 16 bits of the value at an offset

// clang-format off
const Source kCallProcessingSources[] = {
    {0,   Source::k32Bits, 0},
    {4,   Source::k16Bits, 16},
    {8,   Source::k16Bits, 16 + kHigh},
    {12,  Source::k16Bits, 20},
    {16,  Source::k16Bits, 20 + kHigh},
    {20,  Source::k16Bits, 24},
    {24,  Source::k16Bits, 24 + kHigh},
    {28,  Source::k16Bits, 28},
    {32,  Source::k16Bits, 28 + kHigh},
    {36,  Source::k16Bits, 158},
    {40,  Source::k16Bits, 156},
    {48,  Source::k8Bits, 32 + 1},
    {52,  Source::k8Bits, 12},
    {56,  Source::k8Bits, 13},
    {60,  Source::k8Bits, 14},
    {64,  Source::k16Bits, 36},
    {68,  Source::k16Bits, 160},
    {72,  Source::k8Bits, 32 + 2},
    {76,  Source::k16Bits, 40},
    {88,  Source::k8Bits, 32},
    {92,  Source::k16Bits, 40 + kHigh},
    {96,  Source::k16Bits, 52, 6},
    {120, Source::k16Bits, 64, 6},
    {144, Source::k16Bits, 76, 40},
    {304, Source::k32Bits, 44},
    {308, Source::k32Bits, 48},
    {312, Source::k16Bits, 160 + kHigh},
};

const Source kEvdoSources[] = {
    {0,   Source::k16Bits, 0},
    {4,   Source::k8Bits, 2},
    {8,   Source::k32Bits, 4},
    {12,  Source::k16Bits, 8},
    {16,  Source::k16Bits, 8 + kHigh},
    {20,  Source::k32Bits, 12},
    {24,  Source::k32Bits, 16},
    {28,  Source::k16Bits, 20},
    {32,  Source::k16Bits, 20 + kHigh},
    {36,  Source::k8Bits, 24},
    {40,  Source::k8Bits, 24 + 1},
    {48,  Source::k8Bits, 24 + 2},
    {52,  Source::k8Bits, 24 + 3},
    {60,  Source::k8Bits, 28},
    {64,  Source::k8Bits, 29, 16},
    {132, Source::k8Bits, 48},
    {136, Source::k8Bits, 48 + 1},
    {140, Source::k8Bits, 48 + 2},
};
// clang-format on

template <typename Sources>
void put_sources(const Sources& sources, const Bytes& record, Bytes& reply) {
  for (const Source& source : sources) {
    for (size_t i = 0; i < source.count; ++i) {
      std::copy_n(record.begin() + static_cast<ptrdiff_t>(source.at + source.width * i),
                  source.width,
                  reply.begin() + static_cast<ptrdiff_t>(source.reply_offset + 4 * i));
    }
  }
}

void put_signed(const Bytes& record, size_t at, Bytes& reply, size_t reply_offset) {
  auto value = static_cast<int16_t>(load_le16(record.data() + at));
  store_le32(reply.data() + reply_offset, static_cast<uint32_t>(int32_t{value}));
}

TEST_F(Engineering, EveryCallProcessingFieldHasItsOffset) {
  Bytes record = distinct_record(164);
  Bytes expected(316);
  put_sources(kCallProcessingSources, record, expected);
  put_signed(record, 36 + kHigh, expected, 44);
  store_le32(expected.data() + 84, 1);
  EXPECT_EQ(hex(call_processing(record)), hex(expected));
}

TEST_F(Engineering, EveryEvdoFieldHasItsOffset) {
  Bytes record = distinct_record(52);
  Bytes expected(144);
  put_sources(kEvdoSources, record, expected);
  put_signed(record, 46, expected, 128);
  EXPECT_EQ(hex(evdo(record)), hex(expected));
}

TEST_F(Engineering, TransmitPowerAndPilotEnergyAreSigned) {
  Bytes record(164);
  store_le16(record.data() + 38, 0xFFCE);
  EXPECT_EQ(load_le32(call_processing(record).data() + 44), 0xFFFFFFCE);
  store_le16(record.data() + 38, 0x7FFF);
  EXPECT_EQ(load_le32(call_processing(record).data() + 44), 0x7FFFu);

  Bytes evdo_record(52);
  store_le16(evdo_record.data() + 46, 0x8000);
  EXPECT_EQ(load_le32(evdo(evdo_record).data() + 128), 0xFFFF8000);
  store_le16(evdo_record.data() + 46, 0x0123);
  EXPECT_EQ(load_le32(evdo(evdo_record).data() + 128), 0x0123u);
}

TEST_F(Engineering, HdrRssiIsUnsigned) {
  Bytes record(52);
  store_le16(record.data() + 10, 0xFFCE);
  EXPECT_EQ(load_le32(evdo(record).data() + 16), 0xFFCEu);
}

TEST_F(Engineering, PRevInUseAboveFiveSetsItsFlag) {
  for (uint8_t revision : Bytes{0, 5, 6, 255}) {
    Bytes record(164);
    record[32] = revision;
    Bytes data = call_processing(record);
    EXPECT_EQ(load_le32(data.data() + 88), revision);
    EXPECT_EQ(load_le32(data.data() + 84), revision > 5 ? 1u : 0u) << int{revision};
  }
}

TEST_F(Engineering, UnusedBytesOfTheRecordsAreIgnored) {
  Bytes record(164);
  for (size_t at : {4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 15u, 35u}) record[at] = 0xFF;
  EXPECT_EQ(call_processing(record), Bytes(316));
  Bytes evdo_record(52);
  for (size_t at : {3u, 45u, 51u}) evdo_record[at] = 0xFF;
  EXPECT_EQ(evdo(evdo_record), Bytes(144));
}

Lines opening(const std::string& function, int type, const std::string& characters) {
  return Lines{"log: qorext_hook_sprint_handler: ENTER ",
               "log: " + function + ":  ENTER FUNCTION  0 ",
               "log: In Engineering info request " + std::to_string(type),
               "send vendor 0x10",
               "log: Successfully retrieved datalen " + std::to_string(characters.size()),
               "log: " + function + "() hexDump...",
               "log: HexDump: Data " + hex(text(characters))};
}

// 16-bit values `first`, `first` + 1, ... from an offset of the record.
void put_16_bits(Bytes& record, size_t at, size_t count, unsigned first) {
  for (size_t i = 0; i < count; ++i) {
    store_le16(record.data() + at + 2 * i, static_cast<uint16_t>(first + i));
  }
}

TEST_F(Engineering, EveryCallProcessingFieldIsLogged) {
  Bytes record(164);
  store_le32(record.data(), 1001);
  put_16_bits(record, 12, 2, 0);
  record[12] = 11, record[13] = 12, record[14] = 13;
  put_16_bits(record, 16, 8, 2001);  // pilots, strengths, SID, NID, channel, service option
  record[32] = 6, record[33] = 22, record[34] = 23;
  store_le16(record.data() + 36, 3001);
  store_le16(record.data() + 38, static_cast<uint16_t>(-77));
  put_16_bits(record, 40, 2, 4001);
  store_le32(record.data() + 44, 500001);
  store_le32(record.data() + 48, static_cast<uint32_t>(-500002));
  put_16_bits(record, 52, 6, 6001);
  put_16_bits(record, 64, 6, 7001);
  put_16_bits(record, 76, 40, 8001);
  put_16_bits(record, 156, 4, 9001);
  call_processing(record);

  Lines expected =
      opening("qorext_hook_sprint_get_call_processing_data", 0, hex(record)) +
      Lines{
          "log:   CP status1: fer=1001,   activePilotCount=11,   neighborPilotCount=12,   "
          "candPilotCount=13,   bestActivePilot=2001,   bestActiveStrength=2002,   "
          "bestNeighborPilot=2003,   bestNeighborStrength=2004, ",
          "log: CP status2: sid=2005,   nid=2006,   channel=2007,   serviceOption=2008,   "
          "droppedCallCounter=9002,   lastCallIndicator=9003,   sCallCounter=9001,   "
          "PRevInUse=6, ",
          "log: CP status3: band=22,   lnaStatus=23,   cpState=3001,   txPower=-77,   rssi=4001  "
          " bid=4002   bsLat=500001   bsLat=-500002 "};
  for (int i = 0; i < 6; ++i) {
    std::string number = std::to_string(i);
    expected.push_back("log: CP status4: activeSetPn " + number + " = " + std::to_string(6001 + i));
    expected.push_back("log: CP status4: activeSetStrength " + number + " = " +
                       std::to_string(7001 + i));
  }
  for (int i = 0; i < 40; ++i) {
    expected.push_back("log: CP status5: neighborSetPn " + std::to_string(i) + " = " +
                       std::to_string(8001 + i));
  }
  expected.push_back("log: CP status6: rate_redu=9004 ");
  EXPECT_THAT(trace, ElementsAreArray(expected + reply_lines(replies().at(0))));
}

TEST_F(Engineering, EveryEvdoFieldIsLogged) {
  Bytes record(52);
  store_le16(record.data(), 1001);
  record[2] = 11;
  store_le32(record.data() + 4, 0xABCDEF01);
  put_16_bits(record, 8, 2, 2001);
  store_le32(record.data() + 12, static_cast<uint32_t>(-3001));
  store_le32(record.data() + 16, 3002);
  put_16_bits(record, 20, 2, 4001);
  for (uint8_t i = 0; i < 17; ++i) record[24 + i] = static_cast<uint8_t>(21 + i);
  for (uint8_t i = 0; i < 16; ++i) record[29 + i] = static_cast<uint8_t>(101 + i);
  store_le16(record.data() + 46, static_cast<uint16_t>(-88));
  record[48] = 61, record[49] = 62, record[50] = 63;
  evdo(record);

  Lines expected =
      opening("qorext_hook_sprint_get_evdo_data", 1, hex(record)) +
      Lines{
          "log: EVDO status1: hdrChanNum=1001,  uatiColorCode=11,  txUati=0xABCDEF01,  "
          "pilotPn=2001,  hdrRssi=2002,  rxPwrRx0Dbm=-3001  rxPwrRx1Dbm=3002,  measPkts=4001,  "
          "errPkts=4002,  sessionState=21,",
          "log: EVDO status2: atState=22,  userCount=23   dropCount=0,  hybridMode=24   "
          "macIndex=25,  pilotEnergy=-88,  drcCover=61   sinr=62,  anAuthStatus=63 "};
  for (int i = 0; i < 16; ++i) {
    expected.push_back("log: EVDO status3: sectorIds " + std::to_string(i) + " = " +
                       std::to_string(101 + i));
  }
  EXPECT_THAT(trace, ElementsAreArray(expected + reply_lines(replies().at(0))));
}

TEST_F(Engineering, ModemFailureReturnsZerosAndStatusZero) {
  answer(0x10, le32(1) + le32(0) + le32(4) + text("FFFF"));
  EXPECT_EQ(data_of(kCallProcessingId, 316), Bytes(316));
  EXPECT_EQ(data_of(kEvdoId, 144), Bytes(144));
  fail_send(0x10, -3);
  EXPECT_EQ(data_of(kCallProcessingId, 316), Bytes(316));
  EXPECT_EQ(data_of(kEvdoId, 144), Bytes(144));
  EXPECT_THAT(logs(), Contains("HexDump: Data "));
}

TEST_F(Engineering, RecordOfOneRequestIsNotInTheNext) {
  call_processing(distinct_record(164));
  answer_text("");
  EXPECT_EQ(data_of(kCallProcessingId, 316), Bytes(316));
}

TEST_F(Engineering, ShortTextFillsTheFirstFields) {
  answer_text("01020304");
  Bytes data = data_of(kCallProcessingId, 316);
  EXPECT_EQ(load_le32(data.data()), 0x04030201u);
  EXPECT_EQ(Bytes(data.begin() + 4, data.end()), Bytes(312));
}

TEST_F(Engineering, LowerCaseTextIsDecodedLikeUpperCase) {
  Bytes record = distinct_record(164);
  Bytes expected = call_processing(record);
  answer_text(lower(hex(record)));
  EXPECT_EQ(data_of(kCallProcessingId, 316), expected);
}

// Lengths around the limits of the record, the text and the dump.
class LongText : public Engineering, public testing::WithParamInterface<size_t> {};

TEST_P(LongText, IsDecodedUpToTheRecordsEnd) {
  std::string characters(1000, '1');
  answer_text(characters, GetParam());
  EXPECT_EQ(data_of(kEvdoId, 144), evdo(Bytes(52, 0x11)));
  answer_text(characters, GetParam());
  EXPECT_EQ(data_of(kCallProcessingId, 316), call_processing(Bytes(164, 0x11)));
}

TEST_P(LongText, IsDumpedUpToTheLimitOfADump) {
  answer_text(std::string(1000, '1'), GetParam());
  data_of(kEvdoId, 144);
  std::string claimed = std::to_string(static_cast<int32_t>(GetParam()));
  EXPECT_THAT(logs(), Contains("Successfully retrieved datalen " + claimed));
  Bytes dumped = Bytes(1000, '1') + Bytes(24);
  dumped.resize(std::min<size_t>(GetParam(), 1024));
  EXPECT_THAT(logs(), Contains(GetParam() > 1024 ? "HexDump=buffer overflow"
                                                 : "HexDump: Data " + hex(dumped)));
}

INSTANTIATE_TEST_SUITE_P(Of, LongText,
                         testing::Values(328, 329, 330, 999, 1000, 1001, 1023, 1024, 1025, 4096,
                                         0xFFFFFFFF));

TEST_F(Engineering, InvalidCharactersOfTheTextAreLogged) {
  answer_text("0G");
  data_of(kEvdoId, 144);
  EXPECT_THAT(logs(), Contains("qorext_hook_sprint_hexstr_to_bin invalid char 71 1"));
}

}  // namespace engineering_test
