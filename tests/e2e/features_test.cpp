// SPDX-License-Identifier: Apache-2.0
// Modem features for the parent: generic-hook requests, and two CDMA-hook requests.
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

class Features : public HandsetTest {
 protected:
  // The modem's answer to this message cannot be decoded.
  void expect_failure(const std::string& message, const Bytes& request, const Bytes& reply) {
    handset.inject(message, "malformed");
    expect_reply(request, reply);
  }

  std::string only_modem_request() {
    auto requests = handset.modem_requests();
    EXPECT_EQ(requests.size(), 1u);
    return requests.empty() ? "" : requests[0];
  }
};

std::string utility(uint32_t type, const std::string& data) {
  return vendor_request("utils", fmt::format(R"({{"data":"{}","type":{}}})", data, type));
}

TEST_F(Features, SystemInformationFilterIsForwarded) {
  expect_reply(generic(0x5001E, hex("03")), generic_reply(0x5001E, hex("00")));
  EXPECT_EQ(only_modem_request(), utility(5, "03"));
  expect_failure("utils", generic(0x5001E, hex("03")), generic_reply(0x5001E, hex("05")));
}

TEST_F(Features, CallEndRadioStateIsSixteenBytesAfterTheStatus) {
  Bytes request = generic(0x50505, hex("01"));
  Served served = handset.serve(request);
  EXPECT_EQ(served.replies.size(), 2u * 25);
  EXPECT_EQ(served.replies.substr(0, 18), as_hex(hex("01050505 11000000 00")));
  EXPECT_EQ(only_modem_request(), utility(7, "01"));
  expect_failure("utils", request, generic_reply(0x50505, hex("05")));
}

TEST_F(Features, SilentRebootRelaysTheModemsAnswer) {
  Served served = handset.serve(generic(0x50019, hex("AABB")));
  EXPECT_EQ(only_modem_request(), utility(3, ""));
  EXPECT_EQ(served.replies.substr(0, 8), "01050019");
  expect_failure("utils", generic(0x50019), generic_reply(0x50019, hex("05")));
}

TEST_F(Features, CoverageModeAndTextReachTheModem) {
  expect_reply(generic(0x50020, hex("616200")), generic_reply(0x50020, hex("00")));
  EXPECT_EQ(only_modem_request(), utility(6, "00616200"));
  // The terminator replaces the last character.
  expect_reply(generic(0x50029, hex("02616263")), generic_reply(0x50029, hex("00")));
  EXPECT_EQ(only_modem_request(), utility(6, "0202616200"));
}

TEST_F(Features, DataPlmnIsARecordWithoutAHeader) {
  Served served = handset.serve(generic(0x60001));
  EXPECT_EQ(served.replies.size(), 2u * 568);
  EXPECT_NE(served.replies, as_hex(zeros(568)));
  handset.inject("data_plmn", "malformed");
  expect_reply(generic(0x60001), zeros(568));
}

TEST_F(Features, TunerSettingIsTruncatedAndReturned) {
  Bytes setting = counting(30);
  Bytes kept(setting.begin(), setting.begin() + 24);
  expect_reply(generic(0x5002A, setting), generic_reply(0x5002A, kept));
  EXPECT_EQ(only_modem_request(),
            vendor_request("tuner", fmt::format(R"({{"data":"{}"}})", as_hex(kept))));
  expect_reply(generic(0x5002A), generic_reply(0x5002A, {}));
  expect_failure("tuner", generic(0x5002A), generic_reply(0x5002A, hex("05")));
}

TEST_F(Features, UtilityRequestOfAnyTypeIsAnsweredWithStatusZero) {
  Bytes without_data = cdma(0x0200001E, le32(5) + le32(0) + zeros(256));
  expect_reply(without_data, reply(0x0200001E, 0));
  EXPECT_THAT(handset.modem_requests(), testing::IsEmpty());

  Bytes with_data = cdma(0x0200001E, le32(7) + le32(1) + hex("01") + zeros(255));
  Served served = handset.serve(with_data);
  EXPECT_EQ(served.replies.substr(0, 24), as_hex(hex("1E000002 11000000 00000000")));
  EXPECT_EQ(only_modem_request(), utility(7, "01"));
}

TEST_F(Features, PfpRequestIsAnsweredAndItsTableArrives) {
  expect_reply(cdma(0x0200001C), reply(0x0200001C, 0));
  std::string message = handset.next_message();
  EXPECT_EQ(message.size(), 2u * 260);
  EXPECT_EQ(message.substr(0, 32), as_hex(hex("00000000 14000000 1D000002 E8000000")));
}

Bytes name_request(uint32_t mcc, uint32_t mnc) { return generic(0xA0006, le16(mcc) + le16(mnc)); }

TEST_F(Features, OperatorNameOfAKnownNetworkIsReturned) {
  expect_reply(name_request(1, 1), generic_reply(0xA0006, characters("Lakeshore")));
  expect_reply(name_request(999, 70), generic_reply(0xA0006, characters("Ærø Tel")));
}

TEST_F(Features, OperatorNameOfAnUnknownNetworkIsAFailure) {
  expect_reply(name_request(262, 1), generic_reply(0xA0006, hex("05")));
  expect_failure("get_plmn_name", name_request(1, 1), generic_reply(0xA0006, hex("05")));
}

// The GSM default alphabet as code points, with the escape as itself.
constexpr char32_t kGsmAlphabet[] =
    U"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x1BÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
constexpr size_t kCodes = 128;
static_assert(sizeof kGsmAlphabet / sizeof kGsmAlphabet[0] == kCodes + 1);

std::string utf8(char32_t point) {
  if (point < 0x80) return {static_cast<char>(point)};
  return {static_cast<char>(0xC0 | point >> 6), static_cast<char>(0x80 | (point & 0x3F))};
}

TEST_F(Features, EveryGsmCodeIsReturnedInUtf8) {
  constexpr size_t kMaxCharacters = 64;
  for (size_t first = 0; first < kCodes; first += kMaxCharacters) {
    std::string escaped;
    std::string expected;
    for (size_t code = first; code < first + kMaxCharacters; ++code) {
      char32_t point = kGsmAlphabet[code];
      escaped += fmt::format("\\u{:04x}", static_cast<uint32_t>(point));
      if (point == U'\r') continue;
      expected += point == U'\x1B' ? " " : utf8(point);
    }
    handset.modem().command(fmt::format(
        R"(set operators=[{{"mcc":1,"mnc":1,"short_name":"{}","long_name":"x"}}])", escaped));
    expect_reply(name_request(1, 1), generic_reply(0xA0006, characters(expected)));
  }
}

}  // namespace
}  // namespace e2e
