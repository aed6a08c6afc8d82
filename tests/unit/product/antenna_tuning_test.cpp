// SPDX-License-Identifier: Apache-2.0
#include "src/features/features.h"
#include "tests/unit/product/serving_phone.h"

namespace antenna_tuning_test {

constexpr uint32_t kTuning = 0x5002A;
constexpr unsigned int QMI_TUNER_REQ_V01 = 0x110;

// The layout of request and response.
Bytes tuner_message(uint32_t length, const Bytes& data) {
  return le32(length) + data + Bytes(28 - data.size());
}

Lines answered(const Bytes& data) {
  char tail[16];
  snprintf(tail, sizeof tail, "0x%zx.", data.size());
  return {"reply: " + generic_answer(kTuning, data),
          std::string("log: qorext_hook_set_antenna_tuning sending response, msgLen ") + tail};
}

Lines succeeded(int payload_length, const Bytes& response, const Bytes& data) {
  return Lines{"log: receive request len  " + std::to_string(payload_length), "send vendor 0x110",
               "log: Dumping modem response for QMI_TUNER_REQ_V01...",
               "log: HexDump: Data " + hex(response)} +
         answered(data);
}

class AntennaTuning : public ServingPhone {};

TEST_F(AntennaTuning, SettingIsSentAndTheResponseForwarded) {
  Bytes response = tuner_message(3, from_hex("AABBCC DD"));
  answer(QMI_TUNER_REQ_V01, response);
  ask(Request::generic(kTuning, numbered(5)));
  EXPECT_EQ(trace, succeeded(5, response, from_hex("AABBCC")));
  EXPECT_EQ(sent().request, tuner_message(5, numbered(5)));
  EXPECT_EQ(sent().response_length, 32u);
}

TEST_F(AntennaTuning, ZerosInSettingAndResponseAreKept) {
  Bytes setting = from_hex("00 01 0000 02");
  Bytes response = tuner_message(6, from_hex("00 03 0000 04 00"));
  answer(QMI_TUNER_REQ_V01, response);
  ask(Request::generic(kTuning, setting));
  EXPECT_EQ(trace, succeeded(5, response, from_hex("00 03 0000 04 00")));
  EXPECT_EQ(sent().request, tuner_message(5, setting));
}

// The line "no NULL found at the end of string" is therefore never logged.
TEST_F(AntennaTuning, SettingIsCutTo24BytesAndKeepsItsLastByte) {
  for (uint32_t length : {1u, 2u, 23u, 24u, 25u, 28u, 30u, 4000u}) {
    ask(Request::generic(kTuning, Bytes(length, 0xFF)));
    EXPECT_EQ(trace, succeeded(static_cast<int>(length), Bytes(32), {}));
    uint32_t sent_length = std::min(length, 24u);
    EXPECT_EQ(sent().request, tuner_message(sent_length, Bytes(sent_length, 0xFF)));
  }
}

TEST_F(AntennaTuning, WithoutPayloadSendsNothingButTheLength) {
  ask(generic_claiming(0, kTuning, numbered(5)));
  EXPECT_EQ(trace, succeeded(0, Bytes(32), {}));
  EXPECT_EQ(sent().request, Bytes(32));
}

TEST_F(AntennaTuning, LengthBeyondThePayloadReadsZeros) {
  ask(generic_claiming(0xFFFFFFFF, kTuning, numbered(5)));
  EXPECT_EQ(trace, succeeded(-1, Bytes(32), {}));
  EXPECT_EQ(sent().request, tuner_message(24, numbered(5)));
}

TEST_F(AntennaTuning, ReplyHasTheLengthOfTheResponseUpTo28Bytes) {
  for (uint32_t length : {0u, 1u, 27u, 28u, 29u, 32u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    Bytes response = tuner_message(length, numbered(28));
    answer(QMI_TUNER_REQ_V01, response);
    ask(Request::generic(kTuning));
    EXPECT_EQ(trace, succeeded(0, response, numbered(std::min(length, 28u))));
  }
}

TEST_F(AntennaTuning, FailedSendGetsStatusFive) {
  fail_send(QMI_TUNER_REQ_V01, -3);
  answer(QMI_TUNER_REQ_V01, tuner_message(28, numbered(28)));
  ask(Request::generic(kTuning, numbered(5)));
  EXPECT_EQ(trace, (Lines{"log: receive request len  5", "send vendor 0x110",
                          "log: Sending QMI_TUNER_REQ_V01 failed! with error -3"}) +
                       answered({5}));
}

TEST_F(AntennaTuning, HandlerReturnsTheSendsResult) {
  Request request = Request::generic(kTuning);
  EXPECT_EQ(qorext_hook_set_antenna_tuning(request.data(), 0), 0);
  fail_send(QMI_TUNER_REQ_V01, -3);
  EXPECT_EQ(qorext_hook_set_antenna_tuning(request.data(), 0), -3);
}

}  // namespace antenna_tuning_test
