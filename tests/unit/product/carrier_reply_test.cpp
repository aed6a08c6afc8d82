// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/carrier_handler.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kSend = "qorext_hook_sprint_send_response: ";

class CarrierReplies : public CarrierPhone {
 protected:
  // Twenty bytes, of which the length field says `length`.
  static Bytes header(uint32_t length) {
    return le32(0x020000C0) + le32(length) + le32(5) + text("SECRET") + Bytes{0xA1, 0xA2};
  }
};

TEST_F(CarrierReplies, WithoutDataTheTwentyHeaderBytesGoOutAsTheyStand) {
  EXPECT_EQ(qorext_hook_sprint_send_response(header(0).data(), nullptr), 1u);
  EXPECT_THAT(trace,
              ElementsAre("log: " + kSend + "ENTER FUNCTION 33554624 ",
                          "log: " + kSend + "SEND RESPONSE TO APP LAYER Message ID 33554624 ",
                          "log: " + kSend + "SEND RESPONSE TO APP LAYER Length 0 ",
                          "log: " + kSend + "HEADER ID 33554624 ", "reply: " + hex(header(0))));
}

TEST_F(CarrierReplies, DataLiesFrom18OverTheHeadersLastTwoBytesAndTwoZerosFollow) {
  Bytes data = numbered(5);
  EXPECT_EQ(qorext_hook_sprint_send_response(header(5).data(), data.data()), 1u);
  Bytes expected = header(5);
  expected.resize(18);
  EXPECT_THAT(
      trace,
      ElementsAre("log: " + kSend + "ENTER FUNCTION 33554624 ",
                  "log: " + kSend + "SEND RESPONSE TO APP LAYER Message ID 33554624 ",
                  "log: " + kSend + "SEND RESPONSE TO APP LAYER Length 5 ",
                  "log: " + kSend + "BYTE ARRAY NOT NULL ", "log: " + kSend + "HEADER ID 33554624 ",
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

TEST_F(CarrierReplies, LengthWithoutDataLeavesZerosBehindTheHeader) {
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
  EXPECT_THAT(trace, ElementsAre("log: " + kSend + "ENTER FUNCTION 33554624 "));
}

TEST_F(CarrierReplies, FailedWriteIsNotLookedAt) {
  write_errnos = {EBADF};
  EXPECT_EQ(qorext_hook_sprint_send_response(header(0).data(), nullptr), 1u);
}

TEST(CarrierStatus, OnlyAModemStatusOfFiveIsTold) {
  EXPECT_EQ(status_from_modem(0), 0u);
  EXPECT_EQ(status_from_modem(5), 2u);
  for (uint32_t other : {1u, 2u, 3u, 4u, 6u, 0xFFFFFFFFu}) EXPECT_EQ(status_from_modem(other), 5u);
}

}  // namespace
