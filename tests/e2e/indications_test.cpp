// SPDX-License-Identifier: Apache-2.0
// The modem's indications become unsolicited messages to the parent.
#include <thread>

#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

class Indications : public HandsetTest {
 protected:
  void expect_message(const std::string& indication, const Bytes& message) {
    handset.indicate(indication);
    EXPECT_EQ(handset.next_message(), as_hex(message)) << indication;
  }
};

Bytes notification(uint32_t number) {
  return cdma_message(1111, padded(fmt::format("UNSOLNOTIFY9876-{}", number), 22));
}

TEST_F(Indications, NotificationsCountFromTwelve) {
  for (uint32_t number : {12U, 13U, 14U}) expect_message("notify", notification(number));
}

TEST_F(Indications, GenericMessageHasNoContent) {
  Bytes message = generic_message(hex("00020006"), {});
  expect_message("generic", message);
  expect_message("generic", message);
}

TEST_F(Indications, UtilityTypesBecomeTheirMessages) {
  expect_message("utils type=0 data=0A0B", generic_message(hex("000B0003"), hex("020A0B")));
  expect_message("utils type=0 data=", generic_message(hex("000B0003"), hex("02")));
  expect_message("utils type=2 data=0A0B", generic_message(hex("000C0004"), hex("0A0B")));
  expect_message("utils type=3 data=0A0B", generic_message(hex("000E0004"), hex("0A0B")));
  expect_message("utils type=5 data=0A0B", generic_message(hex("00120004"), hex("0A0B")));
  expect_message("utils type=6 data=0A0B", generic_message(hex("00130004"), hex("0A0B")));
  expect_message("utils type=9 data=0A0B", generic_message(hex("00150004"), hex("0A")));
}

TEST_F(Indications, RfCableStatusBecomesAProperty) {
  for (const char* status : {"1", "0"}) {
    handset.indicate(fmt::format("utils type=7 data=0{}", status));
    handset.messages_until_idle();
    EXPECT_EQ(handset.phone().property("ril.baseband.rfcable.status"), status);
  }
}

TEST_F(Indications, CarrierEventsBecomeTheirMessages) {
  expect_message("carrier_event value=65535", cdma_message(0x020001B0, hex("FFFF0000")));
  expect_message("lte_error first_value=1 second_value=2 third_value=3 text=616263",
                 cdma_message(0x020001B1, le32(1) + hex("02") + le32(3) + padded("abc", 103)));
}

TEST_F(Indications, CoverageReportIsForwardedUnchanged) {
  Bytes report = counting(32);
  expect_message("coverage report=" + as_hex(report), generic_message(hex("01030004"), report));
}

// Has the modem send bursts of each indication. Returns the expected messages.
constexpr size_t kRounds = 10;
constexpr size_t kBurst = 250;

Texts send_bursts(ModemProcess& modem) {
  Texts expected;
  uint32_t number = 12;
  auto burst = [&](const std::string& indication, auto message) {
    modem.command(fmt::format("indicate {} --count {}", indication, kBurst));
    for (size_t i = 0; i < kBurst; ++i) expected.push_back(as_hex(message()));
  };
  for (size_t round = 0; round < kRounds; ++round) {
    Bytes data = counting(50 * round);
    burst("notify", [&] { return notification(number++); });
    burst("utils type=2 data=" + as_hex(data),
          [&] { return generic_message(hex("000C0004"), data); });
    burst("coverage", [] { return generic_message(hex("01030004"), zeros(32)); });
    burst("carrier_event value=7", [] { return cdma_message(0x020001B0, le32(7)); });
  }
  return expected;
}

TEST_F(Indications, BurstsArriveCompleteAndInOrderWhileRequestsAreServed) {
  Texts arrived;
  std::thread parent([&] {
    while (arrived.size() < 4 * kRounds * kBurst &&
           (arrived.empty() || arrived.back() != "nothing"))
      arrived.push_back(handset.next_message());
  });
  auto expected = send_bursts(handset.modem());
  for (uint32_t i = 0; i < 100; ++i) {
    Bytes item = le32(7000) + le32(0) + le32(0) + le32(4);
    expect_reply(cdma(kNvWrite, item + le32(i)), reply(kNvWrite, 0));
    expect_reply(cdma(kNvRead, item), reply(kNvRead, 0, item + le32(i) + zeros(4)));
  }
  parent.join();
  EXPECT_EQ(arrived.size(), expected.size());
  EXPECT_TRUE(arrived == expected);
}

TEST_F(Indications, AParentThatReadsLateLosesNothingAndItsRequestsAreServed) {
  constexpr size_t kMessages = 1000;  // far more than a pipe holds
  Bytes data = counting(500);
  handset.indicate(fmt::format("utils type=3 data={} --count {}", as_hex(data), kMessages));
  for (int i = 0; i < 20; ++i) {
    expect_reply(cdma(kUnknownId), reply(kUnknownId, 6));
  }
  std::string expected = as_hex(generic_message(hex("000E0004"), data));
  for (size_t i = 0; i < kMessages; ++i) ASSERT_EQ(handset.next_message(), expected) << i;
}

}  // namespace
}  // namespace e2e
