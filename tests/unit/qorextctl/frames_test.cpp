// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/frames.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/unit/qorextctl/frame_samples.h"

namespace qorextctl {
namespace {

auto size_for(ReplyForm form) {
  return [form](View bytes) { return reply_size(bytes, form); };
}

// Two frames arrive in two reads, split at every byte.
template <class SizeOf>
void expect_split(const Bytes& first, const Bytes& second, SizeOf size_of) {
  Bytes stream = first;
  stream.insert(stream.end(), second.begin(), second.end());
  for (size_t cut = 0; cut <= stream.size(); ++cut) {
    FrameBuffer buffer;
    std::vector<Bytes> frames;
    for (View piece : {View(stream).first(cut), View(stream).subspan(cut)}) {
      buffer.append(piece);
      while (auto frame = buffer.take(size_of)) frames.push_back(*frame);
    }
    ASSERT_EQ(frames.size(), 2u) << "cut at " << cut;
    EXPECT_EQ(frames[0], first);
    EXPECT_EQ(frames[1], second);
    EXPECT_TRUE(buffer.pending().empty());
  }
}

// If the rest moved after each frame, this would take a minute.
TEST(Frames, ManyAreTakenFromALargeBufferInAShortTime) {
  constexpr size_t kFrames = 200'000;
  FrameBuffer buffer;
  buffer.append(Bytes(kFrames * kUnsolOverhead));
  auto start = std::chrono::steady_clock::now();
  size_t taken = 0;
  while (buffer.take(unsolicited_size)) {
    if (++taken % 1000 == 0) buffer.append(Bytes(kUnsolOverhead));
  }
  EXPECT_EQ(taken, kFrames + kFrames / 1000);
  EXPECT_TRUE(buffer.pending().empty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(Frames, CdmaRepliesAreFoundInReadsSplitAtAnyByte) {
  expect_split(cdma_frame(0x02000016, 0, Bytes(25, 0xAA)), cdma_frame(0x020000B5, 0, {}),
               size_for(ReplyForm::cdma));
}

TEST(Frames, GenericRepliesAreFoundInReadsSplitAtAnyByte) {
  expect_split(generic_frame(0x050505, Bytes(17, 3)), generic_frame(0x050019, {}),
               size_for(ReplyForm::generic));
  expect_split(from_hex("01050506 FFFFFFFF"), generic_frame(0x05001E, {0}),
               size_for(ReplyForm::generic_status));
}

TEST(Frames, DataPlmnRepliesAreFoundByTheirSize) {
  expect_split(Bytes(kDataPlmnSize, 0), Bytes(kDataPlmnSize, 0x11), size_for(ReplyForm::data_plmn));
  expect_split(from_hex("01060001 FFFFFFFF"), Bytes(kDataPlmnSize, 1),
               size_for(ReplyForm::data_plmn));
}

TEST(Frames, UnsolicitedFramesOfBothFormatsAreFoundInReadsSplitAtAnyByte) {
  expect_split(cdma_unsolicited(0x457, Bytes(22, 0x55)), generic_unsolicited(0x04000C00, {}),
               unsolicited_size);
  expect_split(generic_unsolicited(0x04000C00, Bytes(33, 0x55)),
               cdma_unsolicited(0x457, Bytes(4, 0x55)), unsolicited_size);
}

TEST(Frames, SingleBytesGiveTheSameFrames) {
  Bytes frame = cdma_frame(0x02000016, 0, Bytes(30, 1));
  FrameBuffer buffer;
  for (size_t i = 0; i + 1 < frame.size(); ++i) {
    buffer.append({&frame[i], 1});
    EXPECT_FALSE(buffer.take(size_for(ReplyForm::cdma)));
  }
  buffer.append({&frame.back(), 1});
  EXPECT_EQ(buffer.take(size_for(ReplyForm::cdma)), frame);
}

TEST(Frames, ACorruptLengthTakesAllBytesPresent) {
  Bytes broken = from_hex("16000002 FFFFFFFF 00000000 0000");
  EXPECT_EQ(reply_size(broken, ReplyForm::cdma), broken.size());
  EXPECT_EQ(reply_size(from_hex("01050019 00000080 AA"), ReplyForm::generic), 9u);
  Bytes frame = cdma_unsolicited(0x457, Bytes(4, 0x55));
  frame[15] = 0xFF;
  EXPECT_EQ(unsolicited_size(frame), frame.size());
}

TEST(Frames, AnIncompleteHeaderGivesNoSize) {
  EXPECT_EQ(reply_size(Bytes(7), ReplyForm::cdma), std::nullopt);
  EXPECT_EQ(reply_size(Bytes(7), ReplyForm::generic), std::nullopt);
  EXPECT_EQ(unsolicited_size(Bytes(15)), std::nullopt);
}

TEST(Frames, RequestsAreClassifiedAsInTheDaemon) {
  using Kind = Classified::Kind;
  Classified cdma = classify(from_hex("16000002 00000000"));
  EXPECT_EQ(cdma.kind, Kind::cdma);
  EXPECT_EQ(cdma.id, 0x02000016u);
  Classified generic = classify(from_hex("01050019 00000000"));
  EXPECT_EQ(generic.kind, Kind::generic);
  EXPECT_EQ(generic.id, 0x50019u);
  EXPECT_EQ(classify(from_hex("01000002 00000000")).kind, Kind::cdma);
  EXPECT_EQ(classify(from_hex("03050019 00000000")).kind, Kind::unknown);
  EXPECT_EQ(classify(from_hex("01050019 000000")).kind, Kind::unknown);
}

TEST(Expectation, TheRowOfTheCommandDescribesTheReply) {
  Bytes request = build({.id = 0x02000007});
  EXPECT_STREQ(expect_reply(request, find_request("get-mob-p-rev")).request->name, "get-mob-p-rev");
  EXPECT_STREQ(expect_reply(request, nullptr).request->name, "read-item-28");
  EXPECT_STREQ(expect_reply(request, find_request("cdma")).request->name, "read-item-28");
}

TEST(Expectation, AnUnknownIdHasAFormButNoRow) {
  Expected cdma = expect_reply(build({.id = 0x02000014}), nullptr);
  EXPECT_EQ(cdma.request, nullptr);
  EXPECT_EQ(cdma.form, ReplyForm::cdma);
  Expected generic = expect_reply(from_hex("01050506 00000000"), nullptr);
  EXPECT_EQ(generic.request, nullptr);
  EXPECT_EQ(generic.form, ReplyForm::generic);
  EXPECT_EQ(expect_reply(from_hex("0501"), nullptr).form, ReplyForm::generic);
}

TEST(Expectation, AProfileWithPayloadAndAnyAkeyGetTwoReplies) {
  EXPECT_EQ(expect_reply(build({.id = 0x020000B5, .payload = Bytes(4)}), nullptr).replies, 2);
  EXPECT_EQ(expect_reply(build({.id = 0x020000B5}), nullptr).replies, 1);
  EXPECT_EQ(expect_reply(build({.id = 0x02000013}), nullptr).replies, 2);
  EXPECT_EQ(expect_reply(build({.id = 0x02000016}), nullptr).replies, 1);
}

}  // namespace
}  // namespace qorextctl
