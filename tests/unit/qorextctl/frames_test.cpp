// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/frames.h"

#include <gtest/gtest.h>

#include <chrono>

namespace qorextctl {
namespace {

Bytes from_hex(const char* text) { return *parse_hex(text); }

Bytes cdma_reply(uint32_t id, const Bytes& data) {
  Bytes frame = build({.id = id, .payload = data});
  frame.insert(frame.end(), 2, 0);
  return frame;
}

Bytes generic_reply(const char* header, const Bytes& data) {
  Bytes frame = from_hex(header);
  append_le(frame, static_cast<uint32_t>(data.size()), 4);
  frame.insert(frame.end(), data.begin(), data.end());
  return frame;
}

Bytes unsolicited(uint32_t format, size_t data_size) {
  Bytes frame;
  append_le(frame, format, 4);
  append_le(frame, 8, 4);
  append_le(frame, 0x04000C00, 4);
  append_le(frame, static_cast<uint32_t>(data_size), 4);
  frame.resize(data_size + kUnsolOverhead, 0x55);
  return frame;
}

auto size_for(ReplyForm form) {
  return [form](View bytes) { return reply_size(bytes, form); };
}

// Both frames come in two reads, cut at every possible place.
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

// Moving the rest after each frame would take a minute.
TEST(Frames, ManyAreTakenOutOfALargeBufferInShortTime) {
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

TEST(Frames, CdmaRepliesAreSplitWhereverTheReadsCutThem) {
  expect_split(cdma_reply(0x02000016, Bytes(25, 0xAA)), cdma_reply(0x020000B5, {}),
               size_for(ReplyForm::cdma));
}

TEST(Frames, GenericRepliesAreSplitWhereverTheReadsCutThem) {
  expect_split(generic_reply("01050505", Bytes(17, 3)), generic_reply("01050019", {}),
               size_for(ReplyForm::generic));
  expect_split(from_hex("01050506 FFFFFFFF"), generic_reply("0105001E", {0}),
               size_for(ReplyForm::generic_status));
}

TEST(Frames, DataPlmnRepliesAreSplitBySizeAlone) {
  expect_split(Bytes(kDataPlmnSize, 0), Bytes(kDataPlmnSize, 0x11), size_for(ReplyForm::data_plmn));
  expect_split(from_hex("01060001 FFFFFFFF"), Bytes(kDataPlmnSize, 1),
               size_for(ReplyForm::data_plmn));
}

TEST(Frames, UnsolicitedFramesOfBothFormatsAreSplitWhereverTheReadsCutThem) {
  expect_split(unsolicited(0, 22), unsolicited(1, 0), unsolicited_size);
  expect_split(unsolicited(1, 33), unsolicited(0, 4), unsolicited_size);
}

TEST(Frames, BytesThatComeOneByOneMakeTheSameFrames) {
  Bytes frame = cdma_reply(0x02000016, Bytes(30, 1));
  FrameBuffer buffer;
  for (size_t i = 0; i + 1 < frame.size(); ++i) {
    buffer.append({&frame[i], 1});
    EXPECT_FALSE(buffer.take(size_for(ReplyForm::cdma)));
  }
  buffer.append({&frame.back(), 1});
  EXPECT_EQ(buffer.take(size_for(ReplyForm::cdma)), frame);
}

TEST(Frames, ALengthThatCannotBeTakesAllBytesPresent) {
  Bytes broken = from_hex("16000002 FFFFFFFF 00000000 0000");
  EXPECT_EQ(reply_size(broken, ReplyForm::cdma), broken.size());
  EXPECT_EQ(reply_size(from_hex("01050019 00000080 AA"), ReplyForm::generic), 9u);
  Bytes frame = unsolicited(0, 4);
  frame[15] = 0xFF;
  EXPECT_EQ(unsolicited_size(frame), frame.size());
}

TEST(Frames, WithoutAWholeHeaderThereIsNoSize) {
  EXPECT_EQ(reply_size(Bytes(7), ReplyForm::cdma), std::nullopt);
  EXPECT_EQ(reply_size(Bytes(7), ReplyForm::generic), std::nullopt);
  EXPECT_EQ(unsolicited_size(Bytes(15)), std::nullopt);
}

TEST(Frames, RequestsAreClassifiedAsTheDaemonDoesIt) {
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

TEST(Expectation, UnknownIdsHaveAFormButNoRow) {
  Expected cdma = expect_reply(build({.id = 0x02000014}), nullptr);
  EXPECT_EQ(cdma.request, nullptr);
  EXPECT_EQ(cdma.form, ReplyForm::cdma);
  Expected generic = expect_reply(from_hex("01050506 00000000"), nullptr);
  EXPECT_EQ(generic.request, nullptr);
  EXPECT_EQ(generic.form, ReplyForm::generic);
  EXPECT_EQ(expect_reply(from_hex("0501"), nullptr).form, ReplyForm::generic);
}

TEST(Expectation, TwoRepliesFollowAProfileWithPayloadAndAnyAkey) {
  EXPECT_EQ(expect_reply(build({.id = 0x020000B5, .payload = Bytes(4)}), nullptr).replies, 2);
  EXPECT_EQ(expect_reply(build({.id = 0x020000B5}), nullptr).replies, 1);
  EXPECT_EQ(expect_reply(build({.id = 0x02000013}), nullptr).replies, 2);
  EXPECT_EQ(expect_reply(build({.id = 0x02000016}), nullptr).replies, 1);
}

}  // namespace
}  // namespace qorextctl
