// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/handlers.h"

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace nv_access_test {

class NvAccess : public ServingPhone {
 protected:
  // Each returns the handler's result.
  int read(Request request, uint32_t item = 28) {
    forget();
    return nvRead(request.data(), item);
  }
  int write(Request request) {
    forget();
    return nvWrite(request.data(), 28);
  }
  int general_read(Request request = Request::cdma(0x02000016, Bytes(16))) {
    forget();
    return genNvRead(request.data(), 0);
  }
  int general_write(uint32_t length, const Bytes& data) {
    forget();
    Bytes payload = le32(4242) + le32(1) + le32(2) + le32(length) + data;
    return genNvWrite(Request::cdma(0x02000015, payload).data(), 0);
  }
};

TEST_F(NvAccess, FixedReadRepliesWithTheFirstFourBytes) {
  answer(8, read_answer(28, 10, numbered(10)));
  EXPECT_EQ(read(Request::cdma(0x02000007)), 0);
  std::string frame = reply(0x02000007, 0, {1, 2, 3, 4});
  EXPECT_THAT(trace,
              ElementsAre("log: NV Read RdeId 28", "send vendor 0x8",
                          "log: handleNvResponse for id 2000007, dataSize-4, respSize-10",
                          "log: handleNvRsp: data is 1 for msgId 0x2000007",
                          "log: handleNvRsp: response hexdump for p_respHdr->msgId 0x2000007...",
                          "log: HexDump: Data " + frame, "reply: " + frame));
  EXPECT_EQ(frame.size(), 2u * 24);
  EXPECT_EQ(sent().request, le32(28) + Bytes(528));
  EXPECT_EQ(sent().response_length, 540u);
}

TEST_F(NvAccess, FixedReadIgnoresTheModemsResult) {
  answer(8, read_answer(28, 4, {9, 8, 7, 6}, 1, 16));
  read(Request::cdma(0x0200000F), 37);
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000F, 0, {9, 8, 7, 6})));
}

TEST_F(NvAccess, FixedReadServesThreeIdsWithData) {
  answer(8, read_answer(1, 4, {200, 0, 0, 1}));
  for (uint32_t id : {0x02000007u, 0x0200000Du, 0x0200000Fu}) {
    read(Request::cdma(id), 1);
    EXPECT_THAT(replies(), ElementsAre(reply(id, 0, {200, 0, 0, 1})));
    EXPECT_THAT(logs()[2], testing::StartsWith("handleNvRsp: data is 200 for"));
  }
}

TEST_F(NvAccess, FixedReadOfItems38And39IsRefusedWithZeros) {
  answer(8, read_answer(38, 4, {1, 2, 3, 4}));
  for (uint32_t id : {0x02000017u, 0x02000019u}) {
    read(Request::cdma(id), 38);
    std::string frame = reply(id, 5, Bytes(4));
    char digits[16];
    snprintf(digits, sizeof digits, "%x", id);
    EXPECT_THAT(trace, ElementsAre("log: NV Read RdeId 38", "send vendor 0x8",
                                   std::string("log: handleNvResponse for id ") + digits +
                                       ", dataSize-4, respSize-4",
                                   "log: This should not happen",
                                   std::string("log: handleNvRsp: response hexdump for "
                                               "p_respHdr->msgId 0x") +
                                       digits + "...",
                                   "log: HexDump: Data " + frame, "reply: " + frame));
  }
}

TEST_F(NvAccess, FixedReadThatCannotBeSentFails) {
  fail_send(8, -2);
  read(Request::cdma(0x02000007));
  EXPECT_THAT(trace, ElementsAre("log: NV Read RdeId 28", "send vendor 0x8",
                                 "reply: " + reply(0x02000007, 5)));
}

TEST_F(NvAccess, FixedReadWithoutAResponseRowGetsNoReply) {
  EXPECT_EQ(read(Request::cdma(0x02000008)), 0);
  EXPECT_THAT(trace, ElementsAre("log: NV Read RdeId 28", "send vendor 0x8"));
}

TEST_F(NvAccess, ItemReplyNeverCarriesTheProgrammingCode) {
  ElementReadResponse response = {};
  response.length = 6;
  memcpy(response.data, "123456", 6);
  forget();
  handleNvResponse(Request::cdma(0x0200000A).data(), response, 6);
  EXPECT_EQ(logs()[1], "This should not happen");
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000A, 5, Bytes(6))));
}

TEST_F(NvAccess, FixedReadWithoutMemoryGetsNoReply) {
  allocations_left = 0;
  EXPECT_EQ(read(Request::cdma(0x02000007)), 0);
  EXPECT_THAT(replies(), IsEmpty());
}

TEST_F(NvAccess, ResponseTableHasSixRows) {
  for (uint32_t id : {0x02000007u, 0x02000017u, 0x02000019u, 0x0200000Du, 0x0200000Fu}) {
    ASSERT_NE(find_nv_response(id), nullptr);
    EXPECT_EQ(find_nv_response(id)->data_size, 4u);
    EXPECT_EQ(find_nv_response(id)->handler, handleNvResponse);
  }
  ASSERT_NE(find_nv_response(0x0200000A), nullptr);
  EXPECT_EQ(find_nv_response(0x0200000A)->data_size, 6u);
  EXPECT_EQ(find_nv_response(0x0200000A)->handler, handleSpcResponse);
  EXPECT_EQ(find_nv_response(0x02000008), nullptr);
  EXPECT_EQ(find_nv_response(0x02000016), nullptr);
}

TEST_F(NvAccess, MatchingCodeIsConfirmed) {
  answer(8, read_answer(32, 6, text("123456")));
  read(Request::cdma(0x0200000A, text("123456")), 32);
  EXPECT_THAT(trace, ElementsAre("log: NV Read RdeId 32", "send vendor 0x8",
                                 "log: handleSpcResponse for id 200000a, respSize-6",
                                 "reply: " + reply(0x0200000A, 0)));
}

TEST_F(NvAccess, CodeIsComparedAlsoAfterAModemError) {
  answer(8, read_answer(32, 6, text("123456"), 1, 16));
  read(Request::cdma(0x0200000A, text("123456")), 32);
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000A, 0)));
}

TEST_F(NvAccess, EveryWrongDigitIsRefused) {
  answer(8, read_answer(32, 6, text("123456")));
  for (size_t i = 0; i < 6; ++i) {
    std::string code = "123456";
    code[i] = '0';
    read(Request::cdma(0x0200000A, text(code)), 32);
    EXPECT_THAT(replies(), ElementsAre(reply(0x0200000A, 5))) << i;
  }
}

TEST_F(NvAccess, CodeOfTheWrongLengthIsNotCompared) {
  answer(8, read_answer(32, 6, text("123456")));
  for (uint32_t length : {0u, 5u, 7u}) {
    read(Request::cdma(0x0200000A, text("123456")).claiming(length), 32);
    EXPECT_THAT(replies(), ElementsAre(reply(0x0200000A, 5))) << length;
  }
}

TEST_F(NvAccess, ItemOfTheWrongLengthMatchesNoCode) {
  for (uint32_t length : {0u, 5u, 7u}) {
    answer(8, read_answer(32, length, text("123456")));
    read(Request::cdma(0x0200000A, text("123456")), 32);
    EXPECT_THAT(replies(), ElementsAre(reply(0x0200000A, 5))) << length;
  }
}

TEST_F(NvAccess, FixedWriteSendsThePayload) {
  write(Request::cdma(0x02000008, {1, 2, 3, 4}));
  EXPECT_THAT(trace, ElementsAre("log: NV write RdeId: 28 length 4", "send vendor 0x9",
                                 "reply: " + reply(0x02000008, 0)));
  EXPECT_EQ(sent().request,
            le32(28) + le32(0) + le32(0) + le32(4) + le32(4) + from_hex("01020304") + Bytes(508));
  EXPECT_EQ(sent().response_length, 8u);
}

TEST_F(NvAccess, FixedWriteAccepts512Bytes) {
  Bytes data = numbered(512);
  write(Request::cdma(0x02000008, data));
  EXPECT_EQ(Bytes(sent().request.begin() + 20, sent().request.end()), data);
  EXPECT_THAT(replies(), ElementsAre(reply(0x02000008, 0)));
}

TEST_F(NvAccess, FixedWriteOfMoreThan512BytesIsNotSent) {
  for (uint32_t length : {513u, 0xFFFFFFFFu}) {
    write(Request::cdma(0x02000008).claiming(length));
    EXPECT_THAT(trace, ElementsAre("log: NV write RdeId: 28 length " +
                                       std::to_string(static_cast<int32_t>(length)),
                                   "reply: " + reply(0x02000008, 5)));
  }
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(NvAccess, FixedWriteFailsOnTheSendAndOnTheModemsResult) {
  fail_send(9, -3);
  write(Request::cdma(0x02000008, {1}));
  EXPECT_THAT(trace, ElementsAre("log: NV write RdeId: 28 length 1", "send vendor 0x9",
                                 "log: NV write Err RdeId=28, Err=-3, resp_type=0",
                                 "reply: " + reply(0x02000008, 5)));
  fail_send(9, 0);
  for (uint32_t result : {1u, 2u, ~0u}) {
    answer(9, le32(result) + le32(48));
    write(Request::cdma(0x02000008, {1}));
    EXPECT_THAT(trace, ElementsAre("log: NV write RdeId: 28 length 1", "send vendor 0x9",
                                   "log: NV write Err RdeId=28, Err=0, resp_type=48",
                                   "reply: " + reply(0x02000008, 5)));
  }
}

TEST_F(NvAccess, GeneralReadRepliesWithTheAddressAndDataOfTheModem) {
  answer(8, read_answer(77, 10, numbered(10)));
  general_read(Request::cdma(0x02000016, le32(10001) + le32(2) + le32(3) + le32(10)));
  std::string frame =
      reply(0x02000016, 0, le32(77) + le32(7) + le32(8) + le32(10) + numbered(10) + Bytes(4));
  EXPECT_THAT(trace,
              ElementsAre("send vendor 0x8", "log: Gen NV Read 77 length 10", "reply: " + frame));
  EXPECT_EQ(frame.size(), 2u * 50);
  EXPECT_EQ(frame.substr(8, 8), "1E000000");
  EXPECT_EQ(sent().request, le32(10001) + le32(2) + le32(3) + le32(10) + Bytes(516));
}

TEST_F(NvAccess, GeneralReadFailsOnTheSendAndOnTheModemsResult) {
  fail_send(8, -3);
  general_read();
  fail_send(8, 0);
  EXPECT_THAT(trace, ElementsAre("send vendor 0x8", "log: Gen NV Read error -3 or 0",
                                 "reply: " + reply(0x02000016, 5)));
  for (uint32_t result : {1u, 2u, ~0u}) {
    answer(8, read_answer(1, 4, Bytes(4), result, 16));
    general_read();
    EXPECT_THAT(trace, ElementsAre("send vendor 0x8", "log: Gen NV Read error 0 or 16",
                                   "reply: " + reply(0x02000016, 5)));
  }
}

TEST_F(NvAccess, GeneralReadIsCutToTheSizeOfTheResponse) {
  answer(8, read_answer(1, 100000, numbered(512)));
  general_read();
  ASSERT_EQ(replies().size(), 1u);
  EXPECT_EQ(
      replies()[0],
      reply(0x02000016, 0, le32(1) + le32(7) + le32(8) + le32(512) + numbered(512) + Bytes(4)));
}

TEST_F(NvAccess, GeneralReadWithoutMemoryGetsNoReply) {
  allocations_left = 0;
  general_read();
  EXPECT_THAT(replies(), IsEmpty());
}

TEST_F(NvAccess, GeneralWriteSendsAddressAndData) {
  general_write(3, {0xA, 0xB, 0xC});
  EXPECT_THAT(
      trace,
      ElementsAre("log: Gen NV Write RdeId 4242, rec num 1, offset 2, len 3. hexdump...",
                  "log: HexDump: Data 0A0B0C", "send vendor 0x9",
                  "log: Gen NV Write success for element 4242", "reply: " + reply(0x02000015, 0)));
  EXPECT_EQ(sent().request,
            le32(4242) + le32(1) + le32(2) + le32(3) + le32(3) + from_hex("0A0B0C") + Bytes(509));
}

TEST_F(NvAccess, GeneralWriteOf512BytesIsSent) {
  general_write(512, numbered(512));
  EXPECT_EQ(Bytes(sent().request.begin() + 20, sent().request.end()), numbered(512));
  EXPECT_THAT(replies(), ElementsAre(reply(0x02000015, 0)));
}

TEST_F(NvAccess, GeneralWriteOf513BytesOrMoreGetsNoReply) {
  general_write(513, numbered(513));
  EXPECT_THAT(trace, ElementsAre("log: Data more than buffer size 513"));
  general_write(0xFFFFFFFF, {});
  EXPECT_THAT(trace, ElementsAre("log: Data more than buffer size -1"));
}

TEST_F(NvAccess, GeneralWriteFailsOnTheSendAndOnTheModemsResult) {
  auto expect_failure = [this](const std::string& line) {
    general_write(0, {});
    EXPECT_THAT(trace,
                ElementsAre("log: Gen NV Write RdeId 4242, rec num 1, offset 2, len 0. hexdump...",
                            "log: HexDump: Data ", "send vendor 0x9",
                            "log: Gen NV write error " + line + ", for element 4242",
                            "reply: " + reply(0x02000015, 5)));
  };
  fail_send(9, -3);
  expect_failure("-3 result 0");
  fail_send(9, 0);
  for (uint32_t result : {1u, 2u, ~0u}) {
    answer(9, le32(result) + le32(48));
    expect_failure("0 result " + std::to_string(static_cast<int>(result)));
  }
}

TEST_F(NvAccess, HandlersReturnZeroAlsoAfterAFailure) {
  Request code = Request::cdma(0x0200000A, text("123456"));
  for (auto [rc, allocations] : {std::pair(0, -1), {0, 0}, {-3, -1}, {-3, 0}}) {
    fail_send(8, rc);
    fail_send(9, rc);
    allocations_left = allocations;
    EXPECT_EQ(read(Request::cdma(0x02000007)), 0);
    EXPECT_EQ(read(Request::cdma(0x02000017)), 0);
    EXPECT_EQ(read(code), 0);
    EXPECT_EQ(write(Request::cdma(0x02000008, {1})), 0);
    EXPECT_EQ(write(Request::cdma(0x02000008, numbered(513))), 0);
    EXPECT_EQ(general_read(), 0);
    EXPECT_EQ(general_write(3, {1, 2, 3}), 0);
    EXPECT_EQ(general_write(513, {}), 0);
    EXPECT_EQ(handleNvResponse(Request::cdma(0x02000007).data(), {}, 4), 0);
    EXPECT_EQ(handleSpcResponse(code.data(), {}, 6), 0);
  }
}

TEST_F(NvAccess, NullRequestGetsNoReply) {
  EXPECT_EQ(nvRead(nullptr, 28), 0);
  EXPECT_EQ(nvWrite(nullptr, 28), 0);
  EXPECT_EQ(genNvRead(nullptr, 0), 0);
  EXPECT_EQ(genNvWrite(nullptr, 0), 0);
  EXPECT_THAT(trace, IsEmpty());
}

}  // namespace nv_access_test
