// SPDX-License-Identifier: Apache-2.0
#include "src/features/features.h"
#include "tests/unit/product/feature_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint32_t kUtilityRequest = 0x0200001E;

Bytes utility_payload(uint32_t type, uint32_t length, const Bytes& data) {
  Bytes payload = le32(type) + le32(length) + data;
  payload.resize(264);
  return payload;
}

// What the trace shows behind the modem's part of a request.
Lines answered(int rc, uint32_t length, const Bytes& data) {
  std::string size = std::to_string(length);
  return {"log: UTILS: Sending request result is " + std::to_string(rc), "log: handleUtilsResponse",
          "log: handleUtilsResponse for id 200001e, dataSize-" + size + ", respSize-" + size,
          "reply: " + reply(kUtilityRequest, 0, data)};
}

class UtilityRequest : public FeaturePhone {
 protected:
  static int serve(const Bytes& payload) {
    return handleUtilsRequest(Request::cdma(kUtilityRequest, payload).data(), 0);
  }
};

TEST_F(UtilityRequest, PayloadIsSentByteForByte) {
  Bytes payload = utility_payload(0xDEADBEEF, 256, numbered(256));
  answer(kUtilityMessage, utility_response(3, {7, 8, 9}));
  EXPECT_EQ(serve(payload), 0);
  EXPECT_EQ(trace, (Lines{"log: UTILS: req.req_data[0]1, "
                          "req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 0",
                          "send vendor 0xf"}) +
                       answered(0, 3, {7, 8, 9}));
  EXPECT_EQ(sent().request, payload);
  EXPECT_EQ(sent().request.size(), 264u);
  EXPECT_EQ(sent().response_length, 520u);
  EXPECT_EQ(sent().timeout_ms, 15000u);
}

TEST_F(UtilityRequest, FirstAndLastDataByteAreLogged) {
  Bytes data = Bytes{200} + Bytes(254) + Bytes{255};
  serve(utility_payload(1, 1, data));
  EXPECT_EQ(trace.front(),
            "log: UTILS: req.req_data[0]200, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 255");
}

TEST_F(UtilityRequest, IsServedByTheFallbackTable) {
  ask_cdma(Request::cdma(kUtilityRequest, utility_payload(1, 0, {})));
  EXPECT_EQ(trace, declined_request(kUtilityRequest, answered(-1, 0, {})));
}

TEST_F(UtilityRequest, WithoutDataIsNotSentAndAnsweredWithSuccess) {
  answer(kUtilityMessage, utility_response(3, {7, 8, 9}));
  EXPECT_EQ(serve(utility_payload(5, 0, numbered(256))), -1);
  EXPECT_EQ(trace, answered(-1, 0, {}));
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(UtilityRequest, ThatCannotBeSentIsAnsweredWithoutWhatTheLibraryLeftInTheResponse) {
  modem = [](const Exchange&, std::span<uint8_t> response) {
    std::fill(response.begin(), response.end(), uint8_t{1});
    return -3;
  };
  EXPECT_EQ(serve(utility_payload(5, 1, {9})), -3);
  EXPECT_EQ(trace, (Lines{"log: UTILS: req.req_data[0]9, "
                          "req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 0",
                          "send vendor 0xf"}) +
                       answered(-3, 0, {}));
}

TEST_F(UtilityRequest, ThatCannotBeSentIsAnsweredWithSuccessAndNoData) {
  fail_send(kUtilityMessage, -3);
  EXPECT_EQ(serve(utility_payload(5, 1, {9})), -3);
  EXPECT_EQ(trace, (Lines{"log: UTILS: req.req_data[0]9, "
                          "req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 0",
                          "send vendor 0xf"}) +
                       answered(-3, 0, {}));
}

TEST_F(UtilityRequest, ShorterThanItsRecordIsFilledWithZeros) {
  serve(le32(5) + le32(200) + Bytes{1, 2});
  EXPECT_EQ(sent().request, utility_payload(5, 200, {1, 2}));
}

TEST_F(UtilityRequest, LongerThanItsRecordIsCut) {
  Bytes payload = utility_payload(5, 0xFFFFFFFF, numbered(256));
  serve(payload + numbered(500));
  EXPECT_EQ(sent().request, payload);
}

TEST_F(UtilityRequest, RecordIsTakenWhateverLengthTheHeaderClaims) {
  Bytes payload = utility_payload(5, 4, numbered(256));
  for (uint32_t length : {0u, 1u, 0xFFFFFFFFu}) {
    exchanges.clear();
    handleUtilsRequest(Request::cdma(kUtilityRequest, payload).claiming(length).data(), 0);
    EXPECT_EQ(sent().request, payload);
  }
}

TEST_F(UtilityRequest, ReplyCarriesAsMuchAsTheModemGave) {
  for (uint32_t length : {0u, 1u, 511u, 512u}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    trace.clear();
    serve(utility_payload(5, 1, {0}));
    EXPECT_EQ(Lines(trace.begin() + 2, trace.end()), answered(0, length, numbered(length)));
  }
}

TEST_F(UtilityRequest, ReplyIsCutToWhatTheModemCanHaveGiven) {
  for (uint32_t length : {513u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    trace.clear();
    serve(utility_payload(5, 1, {0}));
    EXPECT_THAT(replies(), ElementsAre(reply(kUtilityRequest, 0, numbered(512)))) << length;
  }
}

TEST_F(UtilityRequest, WithoutMemoryIsNotAnswered) {
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

}  // namespace
