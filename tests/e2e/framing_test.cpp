// SPDX-License-Identifier: Apache-2.0
// Requests of every size, and ids that nobody serves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"

namespace e2e {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr size_t kMaxRequestBytes = 17408;

class Framing : public testing::Test {
 protected:
  Handset handset;
};

TEST_F(Framing, OneByteIsAnsweredWithTheMissingBytesAsZeros) {
  Served served = handset.serve(hex("7F"));
  EXPECT_EQ(served.replies, "7f000000ffffffff");
  EXPECT_THAT(served.log,
              ElementsAre("Read 1 bytes from pipe", "getOemHook: NULL DATA or check size",
                          "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"));
}

TEST_F(Framing, SevenBytesAreTooFewForARequest) {
  Served served = handset.serve(hex("16000002 000000"));
  EXPECT_EQ(served.replies, "16000002ffffffff");
  EXPECT_THAT(served.log,
              ElementsAre("Read 7 bytes from pipe", "getOemHook: NULL DATA or check size",
                          "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"));
}

TEST_F(Framing, EightBytesAreEnoughForAGenericRequest) {
  Served served = handset.serve(hex("01050506 00000000"));
  EXPECT_EQ(served.replies, "01050506ffffffff");
  EXPECT_THAT(served.log,
              ElementsAre("Read 8 bytes from pipe", "msg Id is 0x50506, type is 1. ",
                          "Received Generic Hook request 0x60505", "0x60505 not supported"));
}

TEST_F(Framing, AnIdWithItsHighestBitSetIsLoggedWithItsSign) {
  Served served = handset.serve(hex("020506F0 00000102 AABB"));
  EXPECT_EQ(served.replies, "020506f0ffffffff");
  EXPECT_THAT(served.log,
              ElementsAre("Read 10 bytes from pipe", "msg Id is 0x506f0, type is 1. ",
                          "Received Generic Hook request 0xfff00605", "0xfff00605 not supported"));
}

TEST_F(Framing, EightBytesAreEnoughForACdmaHookRequest) {
  Served served = handset.serve(hex("BB000002 00000000"));
  EXPECT_EQ(served.replies, as_hex(reply(0x020000BB, 6)));
}

TEST_F(Framing, AFirstByteAboveTwoIsNoGenericRequest) {
  Served served = handset.serve(hex("05000001 00000000"));
  EXPECT_EQ(served.replies, "05000001ffffffff");
  EXPECT_THAT(served.log, ElementsAre("Read 8 bytes from pipe",
                                      "getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!",
                                      "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"));
}

TEST_F(Framing, AGenericIdOfTwoIsTakenForACdmaHookRequest) {
  Served served = handset.serve(hex("14000002 00000000"));
  EXPECT_EQ(served.replies, as_hex(reply(0x02000014, 6)));
}

TEST_F(Framing, TheLongestRequestIsReadAtOnce) {
  Bytes request = hex("01050506 000043F8") + counting(kMaxRequestBytes - 8);
  Served served = handset.serve(request);
  EXPECT_EQ(served.replies, "01050506ffffffff");
  EXPECT_EQ(served.log[0], "Read 17408 bytes from pipe");
}

TEST_F(Framing, WhatIsLongerIsReadAsTwoRequests) {
  handset.send(hex("01050506 00004400") + counting(kMaxRequestBytes - 8) +
               hex("02050507 00000000"));
  Served first = handset.served();
  Served second = handset.served();
  EXPECT_EQ(first.log[0], "Read 17408 bytes from pipe");
  EXPECT_EQ(second.log[0], "Read 8 bytes from pipe");
  EXPECT_EQ(first.replies + second.replies, "01050506ffffffff02050507ffffffff");
}

TEST_F(Framing, NothingOfALongRequestIsLeftForAShortOne) {
  handset.serve(Bytes(kMaxRequestBytes, 0xFF));
  EXPECT_EQ(handset.serve(hex("01")).replies, "01000000ffffffff");
}

class UnknownId : public Framing, public testing::WithParamInterface<uint32_t> {};

TEST_P(UnknownId, IsAnsweredAsNotSupported) {
  uint32_t id = GetParam();
  Served served = handset.serve(cdma(id, hex("0102030405"), "123456"));
  EXPECT_EQ(served.replies, as_hex(reply(id, 6)));
  EXPECT_THAT(served.log, ElementsAreArray(received(id, 23) + declined(id) +
                                           Texts{fmt::format("{:#x} not supported", id)}));
  EXPECT_THAT(handset.modem_requests(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(CdmaHook, UnknownId,
                         testing::Values(0x02000000, 0x02000005, 0x02000006, 0x02000009, 0x0200000B,
                                         0x0200000C, 0x02000014, 0x0200001B, 0x020000AF,
                                         0x020000CC));

class ObsoleteId : public Framing, public testing::WithParamInterface<uint32_t> {};

TEST_P(ObsoleteId, IsAnsweredInTheRequestsOwnHeader) {
  uint32_t id = GetParam();
  Bytes request = cdma(id, hex("0102030405"), "123456");
  Served served = handset.serve(request);
  EXPECT_EQ(served.replies, as_hex(echo(request, 6)));
  EXPECT_THAT(served.log, ElementsAreArray(
                              received(id, 23) +
                              Texts{fmt::format("qorext_hook_sprint_handle_obsolete_request: ENTER "
                                                "FUNCTION {} ",
                                                id)} +
                              answered(id, 0)));
  EXPECT_THAT(handset.modem_requests(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(CdmaHook, ObsoleteId,
                         testing::Values(0x020000BB, 0x020000C2, 0x020000C3, 0x020000C6, 0x020000C7,
                                         0x020000C8, 0x020000C9, 0x020000CA, 0x020000CB));

}  // namespace
}  // namespace e2e
