// SPDX-License-Identifier: Apache-2.0
// The features that are one utility request each: system-information filter, radio state at the end
// of a call, silent reboot, and the request that carries any utility message.
#include "src/features/features.h"
#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace utility_requests_test {

constexpr uint32_t kSilentReboot = 0x50019;
constexpr uint32_t kSysInfoFilter = 0x5001E;
constexpr uint32_t kCallEndRadioState = 0x50505;

class SysInfoFilter : public ServingPhone {
 protected:
  static Lines outcome(int rc, uint8_t status) {
    return {"log: sys_info filter: sending qorext util request", "send vendor 0xf",
            "log: sys_info filter: sending request result is " + std::to_string(rc),
            "reply: " + generic_answer(kSysInfoFilter, {status}),
            "log: sys_info filter: sending response, msgLen 0x1, resp value " +
                std::to_string(status) + "."};
  }
};

TEST_F(SysInfoFilter, FirstByteIsSent) {
  for (uint8_t byte : Bytes{0, 1, 0x7F, 0xFF}) {
    ask(Request::generic(kSysInfoFilter, {byte, 0xEE}));
    EXPECT_EQ(trace, outcome(0, 0));
    EXPECT_EQ(sent().request, le32(5) + le32(1) + Bytes{byte} + Bytes(255));
  }
}

TEST_F(SysInfoFilter, ModemsResponseIsIgnored) {
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kSysInfoFilter, {1}));
  EXPECT_EQ(trace, outcome(0, 0));
}

TEST_F(SysInfoFilter, FailedSendGetsStatusFive) {
  fail_send(kUtilityMessage, -3);
  ask(Request::generic(kSysInfoFilter, {1}));
  EXPECT_EQ(trace, outcome(-3, 5));
}

TEST_F(SysInfoFilter, EmptyPayloadSendsZero) {
  ask(Request::generic(kSysInfoFilter));
  EXPECT_EQ(sent().request, le32(5) + le32(1) + Bytes(256));
}

class CallEndRadioState : public ServingPhone {
 protected:
  static Lines outcome(int rc, const Bytes& data) {
    char tail[32];
    snprintf(tail, sizeof tail, "0x%zx, resp value %d.", data.size(), data.back());
    return {"log: get_call_end_radio_state : sending qorext util request", "send vendor 0xf",
            "log: get_call_end_radio_state : sending request result is " + std::to_string(rc),
            "reply: " + generic_answer(kCallEndRadioState, data),
            std::string("log: get_call_end_radio_state : sending response, msgLen ") + tail};
  }
};

TEST_F(CallEndRadioState, StatusReplacesTheFirstByte) {
  answer(kUtilityMessage, utility_response(17, from_hex("EE 0100030405060708 090A0B0C0D0EAFFF")));
  ask(Request::generic(kCallEndRadioState, {0x42, 0xEE}));
  EXPECT_EQ(trace, outcome(0, from_hex("00 0100030405060708 090A0B0C0D0EAFFF")) +
                       Lines{"log: get_call_end_radio_state : response, data: "
                             "0x0100030405060708090A0B0C0D0EAFFF"});
  EXPECT_EQ(sent().request, le32(7) + le32(1) + Bytes{0x42} + Bytes(255));
}

TEST_F(CallEndRadioState, ReplyAlwaysHasSeventeenBytes) {
  for (uint32_t length : {0u, 1u, 16u, 18u, 512u, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, {0xEE, 0xAB}));
    ask(Request::generic(kCallEndRadioState, {1}));
    EXPECT_EQ(trace, outcome(0, from_hex("00 AB") + Bytes(15)) +
                         Lines{"log: get_call_end_radio_state : response, data: "
                               "0xAB000000000000000000000000000000"});
  }
}

TEST_F(CallEndRadioState, FailedSendGetsStatusFiveOnly) {
  fail_send(kUtilityMessage, -3);
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kCallEndRadioState, {1}));
  EXPECT_EQ(trace, outcome(-3, {5}));
}

class SilentReboot : public ServingPhone {
 protected:
  static Lines asked(int rc) {
    return {"log: Silent reboot: Sending qorext util request", "send vendor 0xf",
            "log: Silent reboot: Sending request result is " + std::to_string(rc)};
  }

  static Lines response_lines(size_t length) {
    return {
        "log: handleSilentRebootResponse >>",
        "log: handleSilentRebootResponse for id 190005, resp len " + std::to_string(length) + ".",
        "log: handleSilentRebootResponse resp size " + std::to_string(length + 8) + "."};
  }

  static Lines forwarded(const Bytes& data, uint8_t last) {
    char tail[32];
    snprintf(tail, sizeof tail, "0x%zx, resp value %d.", data.size(), last);
    return response_lines(data.size()) +
           Lines{"reply: " + generic_answer(kSilentReboot, data),
                 std::string("log: handleSilentRebootResponse , msgLen ") + tail};
  }
};

TEST_F(SilentReboot, ResponseIsForwardedUpTo512Bytes) {
  for (uint32_t length : {1u, 2u, 255u, 511u, 512u, 513u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    ask(Request::generic(kSilentReboot));
    uint32_t size = std::min(length, 512u);
    EXPECT_EQ(trace, asked(0) + forwarded(numbered(size), static_cast<uint8_t>(size)));
  }
}

TEST_F(SilentReboot, EmptyResponseIsForwardedAsTheHeaderOnly) {
  answer(kUtilityMessage, utility_response(0, numbered(512)));
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(0) + forwarded({}, 0));
  EXPECT_THAT(replies(), ElementsAre("01050019 00000000"_hex));
}

TEST_F(SilentReboot, PayloadIsNotSent) {
  ask(Request::generic(kSilentReboot, numbered(20)));
  EXPECT_EQ(sent().request, le32(3) + Bytes(260));
}

TEST_F(SilentReboot, FailedSendGetsStatusFive) {
  fail_send(kUtilityMessage, -3);
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(-3) +
                       Lines{"log:  Silent reboot send msg error, send back generic failure."} +
                       forwarded({5}, 5));
}

TEST_F(SilentReboot, ReplyIsLoggedBeforeItsMemoryIsAllocated) {
  allocations_left = 0;
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(0) + response_lines(0));
}

constexpr uint32_t kUtilityRequest = 0x0200001E;

Bytes utility_payload(uint32_t type, uint32_t length, const Bytes& data) {
  Bytes payload = le32(type) + le32(length) + data;
  payload.resize(264);
  return payload;
}

// The trace of a request after its exchange with the modem.
Lines answered(int rc, uint32_t length, const Bytes& data) {
  std::string size = std::to_string(static_cast<int32_t>(length));
  return {"log: UTILS: Sending request result is " + std::to_string(rc), "log: handleUtilsResponse",
          "log: handleUtilsResponse for id 200001e, dataSize-" + size + ", respSize-" + size,
          "reply: " + reply(kUtilityRequest, 0, data)};
}

// The lines before the response to a request whose first data byte is `first`.
Lines sending(int first, int last = 0) {
  return {"log: UTILS: req.req_data[0]" + std::to_string(first) +
              ", req.req_data[UTILS_REQ_DATA_SIZE_V01-1] " + std::to_string(last),
          "send vendor 0xf"};
}

class UtilityRequest : public ServingPhone {
 protected:
  static int serve(const Bytes& payload) {
    return handleUtilsRequest(Request::cdma(kUtilityRequest, payload).data(), 0);
  }
};

TEST_F(UtilityRequest, PayloadIsSentByteForByte) {
  Bytes payload = utility_payload(0xDEADBEEF, 256, numbered(256));
  answer(kUtilityMessage, utility_response(3, {7, 8, 9}));
  EXPECT_EQ(serve(payload), 0);
  EXPECT_EQ(trace, sending(1) + answered(0, 3, {7, 8, 9}));
  EXPECT_EQ(sent().request, payload);
  EXPECT_EQ(sent().request.size(), 264u);
  EXPECT_EQ(sent().response_length, 520u);
  EXPECT_EQ(sent().timeout_ms, 15000u);
}

TEST_F(UtilityRequest, FirstAndLastDataByteAreLogged) {
  Bytes data = Bytes{200} + Bytes(254) + Bytes{255};
  serve(utility_payload(1, 1, data));
  EXPECT_EQ(trace.front(), sending(200, 255)[0]);
}

TEST_F(UtilityRequest, IsServedByTheFallbackTable) {
  ask_cdma(Request::cdma(kUtilityRequest, utility_payload(1, 0, {})));
  EXPECT_EQ(trace, declined_request(kUtilityRequest, answered(-1, 0, {})));
}

TEST_F(UtilityRequest, EmptyRequestIsNotSentAndGetsStatusZero) {
  answer(kUtilityMessage, utility_response(3, {7, 8, 9}));
  EXPECT_EQ(serve(utility_payload(5, 0, numbered(256))), -1);
  EXPECT_EQ(trace, answered(-1, 0, {}));
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(UtilityRequest, FailedSendDoesNotForwardTheResponse) {
  modem = [](const Exchange&, std::span<uint8_t> response) {
    std::fill(response.begin(), response.end(), uint8_t{1});
    return -3;
  };
  EXPECT_EQ(serve(utility_payload(5, 1, {9})), -3);
  EXPECT_EQ(trace, sending(9) + answered(-3, 0, {}));
}

TEST_F(UtilityRequest, FailedSendGetsStatusZeroAndNoData) {
  fail_send(kUtilityMessage, -3);
  EXPECT_EQ(serve(utility_payload(5, 1, {9})), -3);
  EXPECT_EQ(trace, sending(9) + answered(-3, 0, {}));
}

TEST_F(UtilityRequest, ShortPayloadIsPaddedWithZeros) {
  serve(le32(5) + le32(200) + Bytes{1, 2});
  EXPECT_EQ(sent().request, utility_payload(5, 200, {1, 2}));
}

TEST_F(UtilityRequest, LongPayloadIsCut) {
  Bytes payload = utility_payload(5, 0xFFFFFFFF, numbered(256));
  serve(payload + numbered(500));
  EXPECT_EQ(sent().request, payload);
}

TEST_F(UtilityRequest, RecordIsSentForAnyLengthInTheHeader) {
  Bytes payload = utility_payload(5, 4, numbered(256));
  for (uint32_t length : {0u, 1u, 0xFFFFFFFFu}) {
    exchanges.clear();
    handleUtilsRequest(Request::cdma(kUtilityRequest, payload).claiming(length).data(), 0);
    EXPECT_EQ(sent().request, payload);
  }
}

TEST_F(UtilityRequest, ReplyHasTheLengthOfTheResponseUpTo512Bytes) {
  for (uint32_t length : {0u, 1u, 511u, 512u, 513u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    trace.clear();
    serve(utility_payload(5, 1, {0}));
    Lines expected = answered(0, length, numbered(std::min(length, 512u)));
    EXPECT_EQ(Lines(trace.begin() + 2, trace.end()), expected);
  }
}

TEST_F(UtilityRequest, FailedAllocationGetsNoReply) {
  allocations_left = 0;
  serve(utility_payload(5, 1, {0}));
  EXPECT_EQ(exchanges.size(), 1u);
  EXPECT_THAT(replies(), IsEmpty());
}

TEST_F(UtilityRequest, ReplyThatCannotBeWrittenIsLost) {
  write_errnos = {EPIPE};
  serve(utility_payload(5, 1, {0}));
  EXPECT_EQ(trace.back(), "log: Write to parent failed 32");
}

}  // namespace utility_requests_test
