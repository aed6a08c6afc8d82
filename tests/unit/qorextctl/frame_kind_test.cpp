// SPDX-License-Identifier: Apache-2.0
// The kind of a frame is recognized by its bytes.
#include "tools/qorextctl/frames/frame_kind.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tests/unit/qorextctl/request_samples.h"

namespace qorextctl {
namespace {

TEST(FrameKind, EachRequestOfTheCatalogueIsRecognized) {
  for (const RequestSample& sample : kRequestSamples) {
    EXPECT_EQ(recognise(from_hex(sample.hex)), FrameKind::request) << sample.line;
  }
}

TEST(FrameKind, RepliesAreRecognizedByTheirLength) {
  for (const Bytes& frame :
       {cdma_frame(0x02000016, 0, Bytes(21)), cdma_frame(0x020000B8, 5, {}),
        generic_frame(0x50020, {0}), generic_frame(0xA0006, from_hex("4142")),
        from_hex("01050506 FFFFFFFF"), from_hex("05000001 FFFFFFFF"), Bytes(568), counting(568)}) {
    EXPECT_EQ(recognise(frame), FrameKind::reply) << to_hex(frame);
  }
}

TEST(FrameKind, UnsolicitedFramesAreRecognizedByTheirHeader) {
  EXPECT_EQ(recognise(cdma_unsolicited(0x020001B0, Bytes(4))), FrameKind::unsolicited);
  EXPECT_EQ(recognise(generic_unsolicited(0x06000200, {})), FrameKind::unsolicited);
  EXPECT_EQ(recognise(generic_unsolicited(0x04000401, Bytes(100))), FrameKind::unsolicited);
}

TEST(FrameKind, AGenericHeaderWithoutDataIsARequest) {
  EXPECT_EQ(recognise(from_hex("01050019 00000000")), FrameKind::request);
}

TEST(FrameKind, ATruncatedFrameWithAKnownIdIsARequest) {
  EXPECT_EQ(recognise(from_hex("16000002 10000000 00000000 0000")), FrameKind::request);
  EXPECT_EQ(recognise(from_hex("01050020 00000004 61")), FrameKind::request);
}

TEST(FrameKind, OtherBytesAreNotAFrame) {
  for (const char* hex : {"", "01", "05000001 00000000", "01050506 00000004 00", "FFFFFFFF FFFF"}) {
    EXPECT_EQ(recognise(from_hex(hex)), std::nullopt) << hex;
  }
}

TEST(FrameKind, EachKindHasItsDecoder) {
  EXPECT_EQ(decode_as(FrameKind::request, from_hex("01050019 00000000")).name, "silent-reboot");
  EXPECT_EQ(decode_as(FrameKind::reply, generic_frame(0x50020, {5})).status_name, "failure");
  EXPECT_EQ(decode_as(FrameKind::reply, Bytes(568)).name, "data-plmn");
  EXPECT_EQ(decode_as(FrameKind::reply, cdma_frame(0x02000014, 6, {})).name, "");
  EXPECT_EQ(decode_as(FrameKind::unsolicited, generic_unsolicited(0x06000200, {})).name, "generic");
}

}  // namespace
}  // namespace qorextctl
