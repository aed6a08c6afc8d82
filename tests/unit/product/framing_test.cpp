// SPDX-License-Identifier: Apache-2.0
#include "src/host/base/framing.h"

#include <future>

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace framing_test {

class Framing : public FakePhone {
 protected:
  Framing() { set_parent_pipes(kReplyFd, kUnsolicitedFd); }

  uint32_t classify(const Bytes& request) {
    type_ = 99;
    return getOemHook(request.data(), request.size(), &type_);
  }

  uint32_t type_ = 99;
};

TEST_F(Framing, CdmaRequestIsIdentifiedByItsFamilyBytes) {
  EXPECT_EQ(classify(from_hex("16000002 00000000")), 0x02000016u);
  EXPECT_EQ(type_, kCdmaHook);
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(Framing, GenericRequestIsIdentifiedByItsTypeByte) {
  EXPECT_EQ(classify(from_hex("01050019 00000000")), 0x50019u);
  EXPECT_EQ(type_, kGenericHook);
  EXPECT_EQ(classify(from_hex("00050019 00000000")), 0x50019u);
  EXPECT_EQ(classify(from_hex("02050019 00000000")), 0x50019u);
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(Framing, FirstByteOfThreeOrMoreIsNotIdentified) {
  EXPECT_EQ(classify(from_hex("03050019 00000000")), kUnclassified);
  EXPECT_EQ(classify(from_hex("FF050019 00000000")), kUnclassified);
  EXPECT_EQ(type_, 99u) << "nothing is stored";
  std::string line = "getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!";
  EXPECT_THAT(logs(), ElementsAre(line, line));
}

TEST_F(Framing, CdmaFamilyIsCheckedBeforeTheTypeByte) {
  EXPECT_EQ(classify(from_hex("FF000002 00000000")), 0x020000FFu);
  EXPECT_EQ(type_, kCdmaHook);
}

TEST_F(Framing, GenericIdOfTwoIsTakenAsCdma) {
  EXPECT_EQ(classify(from_hex("01000002 00000000")), 0x02000001u);
  EXPECT_EQ(type_, kCdmaHook);
}

TEST_F(Framing, SevenBytesAndNoBufferAreRefused) {
  EXPECT_EQ(classify(from_hex("16000002 000000")), kUnclassified);
  EXPECT_EQ(type_, 99u) << "nothing is stored";
  EXPECT_EQ(getOemHook(nullptr, 8, &type_), kUnclassified);
  EXPECT_EQ(type_, 99u) << "nothing is stored";
  std::string line = "getOemHook: NULL DATA or check size";
  EXPECT_THAT(logs(), ElementsAre(line, line));
}

TEST_F(Framing, GenericHeaderIsParsedBigEndian) {
  OemGenHeader header = {};
  Bytes bytes = from_hex("01 050019 01020304");
  EXPECT_EQ(ParOemGen(bytes.data(), bytes.size(), &header), 1);
  EXPECT_EQ(header.msgType, 1u);
  EXPECT_EQ(header.msgId, 0x50019u);
  EXPECT_EQ(header.msgLen, 0x01020304u);
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(Framing, GenericHeaderParserRefusesNullAndShortBuffers) {
  OemGenHeader header = {};
  Bytes bytes = from_hex("01 050019 01020304");
  EXPECT_EQ(ParOemGen(bytes.data(), 8, nullptr), 0);
  EXPECT_EQ(ParOemGen(nullptr, 8, &header), 0);
  EXPECT_EQ(ParOemGen(bytes.data(), 7, &header), 0);
  EXPECT_THAT(logs(),
              ElementsAre("Oem gen header null", "ParOemGen INVALID DATA LEN OR NULL POINTER",
                          "ParOemGen INVALID DATA LEN OR NULL POINTER"));
  EXPECT_EQ(header.msgId, 0u);
}

TEST_F(Framing, NullHeaderIsReportedBeforeANullBuffer) {
  EXPECT_EQ(ParOemGen(nullptr, 0, nullptr), 0);
  EXPECT_THAT(logs(), ElementsAre("Oem gen header null"));
}

TEST_F(Framing, LogShowsTheByteSwappedGenericIdWithItsSign) {
  EXPECT_EQ(generic_id_for_log(from_hex("01050019").data()), 0x190005);
  EXPECT_EQ(generic_id_for_log(from_hex("010500F9").data()), static_cast<int32_t>(0xFFF90005));
}

TEST_F(Framing, StatusReplyIsTwentyBytes) {
  send_cdma_status(0x0200000B, 6);
  EXPECT_THAT(replies(), ElementsAre("0B000002"
                                     "00000000"
                                     "06000000"
                                     "0000000000000000"));
}

TEST_F(Framing, CdmaReplyEndsInTwoBytesMoreThanItsData) {
  Frame frame = cdma_reply(0x02000016, 3, 5);
  ASSERT_TRUE(frame);
  memset(frame.at(kCdmaPayload), 0xAA, 5);
  EXPECT_EQ(hex(std::span(frame.data(), frame.size())),
            "16000002 05000000 03000000 000000000000 AAAAAAAAAA 0000"_hex);
}

TEST_F(Framing, GenericReplyHasItsLengthInLittleEndian) {
  Request request = Request::generic(0x5002A, from_hex("AABBCC"));
  Bytes data(0x0102, 0xAA);
  EXPECT_TRUE(send_generic_reply(request.data(), data.data(), 0x0102));
  EXPECT_THAT(replies(), ElementsAre("01 05002A 02010000"_hex + hex(data)));
}

TEST_F(Framing, GenericStatusIsTheOnlyByteOfItsReply) {
  Request request = Request::generic(0x5001E, from_hex("AABBCC"));
  EXPECT_EQ(send_generic_status(request.data(), kStatusFailure), 5u);
  EXPECT_THAT(replies(), ElementsAre("01 05001E 01000000 05"_hex));
}

TEST_F(Framing, GenericErrorHasTheFirstFourBytesOfTheRequest) {
  send_generic_error(from_hex("05000001").data());
  EXPECT_THAT(replies(), ElementsAre("05000001FFFFFFFF"));
}

TEST_F(Framing, UnsolicitedCdmaFrameHasItsDataAt26) {
  EXPECT_TRUE(send_unsolicited_cdma(0x0200001D, Bytes(4, 0xAA).data(), 4));
  EXPECT_THAT(unsolicited(), ElementsAre("00000000 14000000 1D000002 04000000 00000000 "
                                         "000000000000 AAAAAAAA 0000"_hex));
}

TEST_F(Framing, UnsolicitedGenericFrameHasItsDataAt16) {
  EXPECT_TRUE(send_unsolicited_generic(0x04000301, Bytes(4, 0xAA).data(), 4));
  EXPECT_THAT(unsolicited(), ElementsAre("01000000 08000000 01030004 04000000 AAAAAAAA "
                                         "000000000000000000000000"_hex));
}

TEST_F(Framing, FrameWithoutDataMayHaveANullPointer) {
  EXPECT_TRUE(send_unsolicited_generic(0x06000200, nullptr, 0));
  EXPECT_TRUE(send_cdma_reply(0x0200001E, 0, nullptr, 0));
  EXPECT_EQ(unsolicited().at(0).size(), 2u * 28);
  EXPECT_EQ(replies().at(0).size(), 2u * 20);
}

TEST_F(Framing, FrameWithoutMemoryIsNotSent) {
  allocations_left = 0;
  Bytes data(4);
  EXPECT_FALSE(cdma_reply(1, 0, 4));
  EXPECT_FALSE(send_cdma_reply(1, 0, data.data(), 4));
  EXPECT_FALSE(send_generic_reply(from_hex("0105001900000000").data(), data.data(), 4));
  EXPECT_FALSE(send_unsolicited_cdma(1, data.data(), 4));
  EXPECT_FALSE(send_unsolicited_generic(1, data.data(), 4));
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(Framing, FailedWriteStillCountsAsSent) {
  write_errnos = {EPIPE};
  EXPECT_TRUE(send_cdma_reply(1, 0, nullptr, 0));
  EXPECT_TRUE(send_unsolicited_cdma(1, nullptr, 0));
  EXPECT_THAT(logs(), ElementsAre("Write to parent failed 32", "Write to parent failed 32"));
}

TEST_F(Framing, FramesAreWrittenToTheirPipe) {
  EXPECT_EQ(writeToParent("ab", 2), 1);
  EXPECT_EQ(writeUnsolToParent("cd", 2), 1);
  EXPECT_THAT(trace, ElementsAre("reply: 6162", "unsol: 6364"));
}

TEST_F(Framing, FailedWriteIsLoggedWithErrno) {
  write_errnos = {EPIPE};
  EXPECT_EQ(writeToParent("ab", 2), 0);
  EXPECT_EQ(writeUnsolToParent("cd", 2), 0);
  EXPECT_THAT(trace,
              ElementsAre("log: Write to parent failed 32", "log: Write to parent failed 32"));
}

TEST_F(Framing, WriteThatWouldBlockOrIsInterruptedIsNotRepeated) {
  for (int failure : {EINTR, EAGAIN}) {
    trace.clear();
    write_errnos = {failure, 0};
    EXPECT_EQ(writeToParent("ab", 2), 0);
    EXPECT_EQ(writeUnsolToParent("cd", 2), 1);
    write_errnos = {failure, 0};
    EXPECT_EQ(writeUnsolToParent("ef", 2), 0);
    std::string line = "log: Write to parent failed " + std::to_string(failure);
    EXPECT_THAT(trace, ElementsAre(line, "unsol: 6364", line));
  }
}

// The parent may stop reading one pipe; frames on the other are still written.
TEST_F(Framing, WritersDoNotWaitForEachOther) {
  auto write_to = [](int fd) {
    return fd == kReplyFd ? writeToParent("ab", 2) : writeUnsolToParent("cd", 2);
  };
  for (auto [blocked, other] : {std::pair(kReplyFd, kUnsolicitedFd), {kUnsolicitedFd, kReplyFd}}) {
    std::future<int> beside;
    on_write = [&, blocked = blocked, other = other](int fd) {
      if (fd != blocked) return;
      beside = std::async(std::launch::async, write_to, other);
      EXPECT_EQ(beside.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    };
    EXPECT_EQ(write_to(blocked), 1);
    EXPECT_EQ(beside.get(), 1);
  }
}

TEST_F(Framing, ShortWriteIsNeitherRepeatedNorReported) {
  write_limit = 1;
  EXPECT_EQ(writeToParent("ab", 2), 1);
  EXPECT_THAT(trace, ElementsAre("reply: 61"));
}

// The descriptors cannot be reset, so this test needs its own process.
TEST_F(Framing, WritersFailBeforeTheirPipesAreSet) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto write_early = [this] {
    set_parent_pipes(-1, -1);
    exit_after_lines = 2;
    writeToParent("ab", 2);
    writeUnsolToParent("cd", 2);
  };
  EXPECT_EXIT(write_early(), testing::ExitedWithCode(0),
              "log: Write to parent failed 9\nlog: Write to parent failed 9\n");
}

TEST_F(Framing, HexDumpOf1024BytesShowsThemAll) {
  Bytes bytes(1024, 0xAB);
  hexDump(bytes.data(), bytes.size());
  ASSERT_EQ(logs().size(), 1u);
  EXPECT_EQ(logs()[0], "HexDump: Data " + hex(bytes));
}

TEST_F(Framing, HexDumpOf1025BytesIsRefused) {
  Bytes bytes(1025);
  hexDump(bytes.data(), bytes.size());
  EXPECT_THAT(trace, ElementsAre("log: HexDump=buffer overflow"));
}

TEST_F(Framing, HexDumpOfNoBytesIsEmpty) {
  hexDump("x", 0);
  EXPECT_THAT(trace, ElementsAre("log: HexDump: Data "));
}

TEST_F(Framing, HexTextIsUpperCaseAndTerminated) {
  char text[9];
  memset(text, 'x', sizeof text);
  Bytes bytes = from_hex("0AF1");
  toHexString(bytes.size(), bytes.data(), text);
  EXPECT_STREQ(text, "0AF1");
  EXPECT_EQ(text[5], 'x');
  toHexString(0, bytes.data(), text);
  EXPECT_STREQ(text, "");
}

}  // namespace framing_test
