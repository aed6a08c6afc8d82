// SPDX-License-Identifier: Apache-2.0
// Modem features that the parent asks for: generic-hook requests, and the two of the CDMA family.
#include <gmock/gmock.h>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

class Features : public testing::Test {
 protected:
  void expect_reply(const Bytes& request, const Bytes& reply) {
    EXPECT_EQ(handset.serve(request).replies, as_hex(reply));
  }

  // With the modem refusing to answer this message in a way that can be understood.
  void expect_failure(const std::string& message, const Bytes& request, const Bytes& reply) {
    handset.spoil(message, "malformed");
    expect_reply(request, reply);
  }

  std::string asked_of_modem() {
    auto requests = handset.modem_requests();
    EXPECT_EQ(requests.size(), 1u);
    return requests.empty() ? "" : requests[0];
  }

  Handset handset;
};

std::string utility(uint32_t type, const std::string& data) {
  return asked("qorext", "utils", fmt::format(R"({{"data":"{}","type":{}}})", data, type));
}

TEST_F(Features, SystemInformationFilterIsPassedOn) {
  expect_reply(generic(0x5001E, hex("03")), generic_reply(0x5001E, hex("00")));
  EXPECT_EQ(asked_of_modem(), utility(5, "03"));
  expect_failure("utils", generic(0x5001E, hex("03")), generic_reply(0x5001E, hex("05")));
}

TEST_F(Features, CallEndRadioStateIsSixteenBytesBehindTheStatus) {
  Bytes request = generic(0x50505, hex("01"));
  Served served = handset.serve(request);
  EXPECT_EQ(served.replies.size(), 2u * 25);
  EXPECT_EQ(served.replies.substr(0, 18), as_hex(hex("01050505 11000000 00")));
  EXPECT_EQ(asked_of_modem(), utility(7, "01"));
  expect_failure("utils", request, generic_reply(0x50505, hex("05")));
}

TEST_F(Features, SilentRebootRelaysTheModemsAnswer) {
  Served served = handset.serve(generic(0x50019, hex("AABB")));
  EXPECT_EQ(asked_of_modem(), utility(3, ""));
  EXPECT_EQ(served.replies.substr(0, 8), "01050019");
  expect_failure("utils", generic(0x50019), generic_reply(0x50019, hex("05")));
}

TEST_F(Features, CoverageModeAndTextReachTheModem) {
  expect_reply(generic(0x50020, hex("616200")), generic_reply(0x50020, hex("00")));
  EXPECT_EQ(asked_of_modem(), utility(6, "00616200"));
  // The last character gives way to the end of the text.
  expect_reply(generic(0x50029, hex("02616263")), generic_reply(0x50029, hex("00")));
  EXPECT_EQ(asked_of_modem(), utility(6, "0202616200"));
}

TEST_F(Features, DataPlmnIsTheBareRecord) {
  Served served = handset.serve(generic(0x60001));
  EXPECT_EQ(served.replies.size(), 2u * 568);
  EXPECT_NE(served.replies, as_hex(zeros(568)));
  handset.spoil("data_plmn", "malformed");
  EXPECT_EQ(handset.serve(generic(0x60001)).replies, as_hex(zeros(568)));
}

TEST_F(Features, TunerSettingIsCutAndGivenBack) {
  Bytes setting = counting(30);
  Bytes kept(setting.begin(), setting.begin() + 24);
  expect_reply(generic(0x5002A, setting), generic_reply(0x5002A, kept));
  EXPECT_EQ(asked_of_modem(),
            asked("qorext", "tuner", fmt::format(R"({{"data":"{}"}})", as_hex(kept))));
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
  EXPECT_EQ(asked_of_modem(), utility(7, "01"));
}

TEST_F(Features, PfpRequestIsAnsweredAndItsTableArrives) {
  expect_reply(cdma(0x0200001C), reply(0x0200001C, 0));
  auto frame = handset.daemon().receive_unsolicited(qorextctl::Deadline::in(kPatience));
  ASSERT_TRUE(frame);
  EXPECT_EQ((*frame).size(), 260u);
  EXPECT_EQ(as_hex(*frame).substr(0, 32), as_hex(hex("00000000 14000000 1D000002 E8000000")));
}

// --- operator names ---

Bytes name_request(uint32_t mcc, uint32_t mnc) { return generic(0xA0006, le16(mcc) + le16(mnc)); }

TEST_F(Features, OperatorNameOfAKnownNetworkIsTold) {
  expect_reply(name_request(1, 1), generic_reply(0xA0006, characters("Lakeshore")));
  expect_reply(name_request(999, 70), generic_reply(0xA0006, characters("Ærø Tel")));
}

TEST_F(Features, OperatorNameOfAnUnknownNetworkIsAFailure) {
  expect_reply(name_request(262, 1), generic_reply(0xA0006, hex("05")));
  expect_failure("get_plmn_name", name_request(1, 1), generic_reply(0xA0006, hex("05")));
}

// The GSM default alphabet as code points; the escape stands for itself.
constexpr char32_t kGsmAlphabet[] =
    U"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x1BÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
constexpr size_t kCodes = 128;
static_assert(sizeof kGsmAlphabet / sizeof kGsmAlphabet[0] == kCodes + 1);

std::string utf8(char32_t point) {
  if (point < 0x80) return {static_cast<char>(point)};
  return {static_cast<char>(0xC0 | point >> 6), static_cast<char>(0x80 | (point & 0x3F))};
}

TEST_F(Features, EveryGsmCodeComesBackInUtf8) {
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
