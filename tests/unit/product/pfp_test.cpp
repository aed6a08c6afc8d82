// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/handlers.h"

#include "tests/unit/product/serving_phone.h"

using testing::IsEmpty;

namespace pfp_test {

constexpr uint32_t kPfpRequest = 0x0200001C;
constexpr unsigned int kPfpMessage = 0x0A;
constexpr unsigned int kPfpIndication = 0x0A;

// The table as it is decoded: rat at 2, tbl_idx at 4.
Bytes table(uint16_t rat, uint32_t index) {
  return from_hex("EEEE") + le16(rat) + le32(index) + numbered(224);
}

class Pfp : public ServingPhone {
 protected:
  // The trace of a request with this outcome.
  static Lines outcome(int rc, uint32_t result, uint32_t id, uint32_t status) {
    return {"log: MyPfp: Sending request ", "send vendor 0xa",
            "log: MyPfp: returned rc=" + std::to_string(rc) +
                " result =" + std::to_string(static_cast<int>(result)),
            "reply: " + reply(id, status)};
  }
};

TEST_F(Pfp, RequestIsSentToTheModem) {
  EXPECT_EQ(myPfpRequest(Request::cdma(kPfpRequest, numbered(8)).data(), 0), 0);
  EXPECT_EQ(trace, outcome(0, 0, kPfpRequest, 0));
  EXPECT_EQ(sent().request, Bytes(4));
  EXPECT_EQ(sent().response_length, 12u);
  EXPECT_EQ(sent().timeout_ms, 15000u);
}

TEST_F(Pfp, RequestIsServedByTheFallbackTable) {
  ask_cdma(Request::cdma(kPfpRequest));
  EXPECT_EQ(trace, declined_request(kPfpRequest, outcome(0, 0, kPfpRequest, 0)));
}

TEST_F(Pfp, RefusalByTheModemGetsStatusZero) {
  answer(kPfpMessage, le32(1) + le32(48) + le32(0x77777777));
  EXPECT_EQ(myPfpRequest(Request::cdma(kPfpRequest).data(), 0), 0);
  EXPECT_EQ(trace, outcome(0, 1, kPfpRequest, 0));
}

TEST_F(Pfp, RequestThatCannotBeSentFails) {
  for (int rc : {-3, 1}) {
    fail_send(kPfpMessage, rc);
    trace.clear();
    EXPECT_EQ(myPfpRequest(Request::cdma(kPfpRequest).data(), 0), 0);
    EXPECT_EQ(trace, outcome(rc, 0, kPfpRequest, 5));
  }
}

TEST_F(Pfp, ReplyToANullRequestHasIdZero) {
  EXPECT_EQ(myPfpRequest(nullptr, 0), 0);
  EXPECT_EQ(trace, outcome(0, 0, 0, 0));
}

TEST_F(Pfp, ReplyThatCannotBeWrittenIsLost) {
  write_errnos = {EPIPE};
  EXPECT_EQ(myPfpRequest(Request::cdma(kPfpRequest).data(), 0), 0);
  EXPECT_EQ(trace.back(), "log: Write to parent failed 32");
}

TEST_F(Pfp, TableIsForwardedWhole) {
  decode_to(kPfpIndication, table(7, 12345));
  indicate(kPfpIndication);
  std::string frame = cdma_event(0x0200001D, table(7, 12345));
  EXPECT_EQ(trace,
            declined(kPfpIndication,
                     {"call decode 0xa", "unsol: " + frame,
                      "log: mypfp_ind_msg_v01: rat = 7 , tbl_idx = 12345 data_size = 232 "}));
  EXPECT_EQ(frame.size(), 2u * 260);
}

TEST_F(Pfp, SizeOfTheEncodedTableIsCheckedByTheDecoderOnly) {
  decode_to(kPfpIndication, table(7, 12345));
  for (size_t size : {0u, 1u, 232u, 233u, 4096u}) {
    encoded = Bytes(size, 0xCD);
    trace.clear();
    indicate(kPfpIndication);
    EXPECT_THAT(unsolicited(), testing::ElementsAre(cdma_event(0x0200001D, table(7, 12345))));
  }
}

TEST_F(Pfp, IndexOfTheTableIsLoggedWithItsSign) {
  decode_to(kPfpIndication, table(0, 0xFFFFFFFF));
  indicate(kPfpIndication);
  EXPECT_EQ(trace.back(), "log: mypfp_ind_msg_v01: rat = 0 , tbl_idx = -1 data_size = 232 ");
}

TEST_F(Pfp, TableThatCannotBeDecodedIsDropped) {
  decode_to(kPfpIndication, table(7, 12345));
  fail_decode(kPfpIndication, QMI_MALFORMED_ERR);
  indicate(kPfpIndication);
  EXPECT_EQ(trace,
            declined(kPfpIndication, {"call decode 0xa", "log: failed to decode pfp idl data"}));
}

TEST_F(Pfp, TableWithoutMemoryIsDroppedWithoutALogLine) {
  decode_to(kPfpIndication, table(7, 12345));
  allocations_left = 0;
  indicate(kPfpIndication);
  EXPECT_THAT(unsolicited(), IsEmpty());
  EXPECT_EQ(logs().back(), "Unsol resp 0xa not supported by Sprint handler.");
}

TEST_F(Pfp, TableThatCannotBeWrittenIsLogged) {
  decode_to(kPfpIndication, table(1, 2));
  write_errnos = {EPIPE};
  indicate(kPfpIndication);
  EXPECT_EQ(trace, declined(kPfpIndication,
                            {"call decode 0xa", "log: Write to parent failed 32",
                             "log: mypfp_ind_msg_v01: rat = 1 , tbl_idx = 2 data_size = 232 "}));
}

TEST_F(Pfp, IndicationHandlerReturnsZero) {
  auto deliver = [this] {
    return pfpIndication(vendor_client(), kPfpIndication, encoded.data(),
                         static_cast<unsigned int>(encoded.size()), nullptr);
  };
  EXPECT_EQ(deliver(), 0);
  allocations_left = 0;
  EXPECT_EQ(deliver(), 0);
  fail_decode(kPfpIndication, QMI_MALFORMED_ERR);
  EXPECT_EQ(deliver(), 0);
}

}  // namespace pfp_test
