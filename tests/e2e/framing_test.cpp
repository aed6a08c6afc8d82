// SPDX-License-Identifier: Apache-2.0
// Requests of every size, requests with unknown ids, and random requests.
#include <algorithm>
#include <random>

#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using Framing = HandsetTest;

struct ShortRequest {
  const char* name;
  const char* request;
  const char* reply;
  Texts log;
};

std::ostream& operator<<(std::ostream& out, const ShortRequest& row) { return out << row.name; }

const ShortRequest kShortRequests[] = {
    {"OneByte",
     "7F",
     "7F000000 FFFFFFFF",
     {"Read 1 bytes from pipe", "getOemHook: NULL DATA or check size",
      "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"}},
    {"SevenBytes",
     "16000002 000000",
     "16000002 FFFFFFFF",
     {"Read 7 bytes from pipe", "getOemHook: NULL DATA or check size",
      "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"}},
    {"UnknownGenericId",
     "01050506 00000000",
     "01050506 FFFFFFFF",
     {"Read 8 bytes from pipe", "msg Id is 0x50506, type is 1. ",
      "Received Generic Hook request 0x60505", "0x60505 not supported"}},
    {"NegativeGenericId",
     "020506F0 00000102 AABB",
     "020506F0 FFFFFFFF",
     {"Read 10 bytes from pipe", "msg Id is 0x506f0, type is 1. ",
      "Received Generic Hook request 0xfff00605", "0xfff00605 not supported"}},
    {"FirstByteAboveTwo",
     "05000001 00000000",
     "05000001 FFFFFFFF",
     {"Read 8 bytes from pipe", "getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!",
      "msg Id is 0xffffffff, type is 0. ", "Wrong msg Id"}},
};

class ShortRequests : public Framing, public testing::WithParamInterface<ShortRequest> {};

TEST_P(ShortRequests, GetAnErrorReply) {
  EXPECT_EQ(expect_reply(hex(GetParam().request), hex(GetParam().reply)), GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(Of, ShortRequests, testing::ValuesIn(kShortRequests),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Framing, EightBytesAreEnoughForACdmaHookRequest) {
  expect_reply(hex("BB000002 00000000"), reply(0x020000BB, 6));
}

TEST_F(Framing, AGenericIdOfTwoIsReadAsACdmaHookRequest) {
  expect_reply(hex("14000002 00000000"), reply(0x02000014, 6));
}

TEST_F(Framing, TheLongestRequestIsReadInOnePiece) {
  Bytes request = hex("01050506 000043F8") + counting(kMaxRequestBytes - 8);
  Served served = handset.serve(request);
  EXPECT_EQ(served.replies, "01050506ffffffff");
  EXPECT_EQ(served.log[0], "Read 17408 bytes from pipe");
}

TEST_F(Framing, ALongerRequestIsReadAsTwo) {
  handset.send(hex("01050506 00004400") + counting(kMaxRequestBytes - 8) +
               hex("02050507 00000000"));
  Served first = handset.served();
  Served second = handset.served();
  EXPECT_EQ(first.log[0], "Read 17408 bytes from pipe");
  EXPECT_EQ(second.log[0], "Read 8 bytes from pipe");
  EXPECT_EQ(first.replies + second.replies, "01050506ffffffff02050507ffffffff");
}

TEST_F(Framing, AShortRequestContainsNothingOfTheLongOneBefore) {
  handset.serve(Bytes(kMaxRequestBytes, 0xFF));
  expect_reply(hex("01"), hex("01000000FFFFFFFF"));
}

class UnknownId : public Framing, public testing::WithParamInterface<uint32_t> {};

TEST_P(UnknownId, IsNotSupported) {
  uint32_t id = GetParam();
  expect_effects(cdma(id, hex("0102030405"), "123456"), reply(id, 6),
                 declined(id) + Texts{fmt::format("{:#x} not supported", id)}, {});
}

INSTANTIATE_TEST_SUITE_P(CdmaHook, UnknownId,
                         testing::Values(0x02000000, 0x02000005, 0x02000006, 0x02000009, 0x0200000B,
                                         0x0200000C, 0x02000014, 0x0200001B, 0x020000AF,
                                         0x020000CC));

class ObsoleteId : public Framing, public testing::WithParamInterface<uint32_t> {};

TEST_P(ObsoleteId, GetsAReplyWithTheRequestsHeader) {
  uint32_t id = GetParam();
  Bytes request = cdma(id, hex("0102030405"), "123456");
  expect_served(request, echo(request, 6),
                {fmt::format("qorext_hook_sprint_handle_obsolete_request: ENTER FUNCTION {} ", id)},
                {});
}

INSTANTIATE_TEST_SUITE_P(CdmaHook, ObsoleteId,
                         testing::Values(0x020000BB, 0x020000C2, 0x020000C3, 0x020000C6, 0x020000C7,
                                         0x020000C8, 0x020000C9, 0x020000CA, 0x020000CB));

// Generates requests of all kinds, most of them invalid.
constexpr uint32_t kSeed = 20260917;
constexpr size_t kMaxPayload = 600;

class RequestGenerator {
 public:
  Bytes next() {
    switch (below(4)) {
      case 0:
        return bytes(1 + below(kMaxPayload));
      case 1:
        return le32(0x02000000 + below(0x100)) + bytes(below(24));
      case 2:
        return cdma_claiming(0x02000001 + below(0x1A), claim(), bytes(below(kMaxPayload)));
      default:
        return cdma_claiming(0x020000B0 + below(0x1C), claim(), bytes(below(kMaxPayload)));
    }
  }

 private:
  uint32_t next_word() { return static_cast<uint32_t>(random_()); }
  uint32_t below(uint32_t end) { return next_word() % end; }
  // A length that can be true, or any.
  uint32_t claim() { return below(4) == 0 ? next_word() : below(kMaxPayload); }
  Bytes bytes(size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<uint8_t>(random_()); });
    return bytes;
  }

  std::mt19937 random_{kSeed};
};

bool is_one_of(uint32_t value, std::initializer_list<uint32_t> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

// The number of replies to a CDMA-hook request: two ids get a second one, "not supported".
size_t frames_for(uint32_t id, uint32_t length) {
  if (id == 0x020000B5) return length == 0 ? 1 : 2;
  return id == 0x02000013 ? 2 : 1;
}

// Expects complete frames with a known status and the request's id. A query for band class 14 gets
// the id for band class 10.
void expect_cdma_frames(const Bytes& replies, uint32_t id, size_t count) {
  uint32_t reply_id = id == 0x020000B2 ? 0x020000B0 : id;
  size_t at = 0;
  size_t frames = 0;
  while (replies.size() - at >= 20) {
    EXPECT_EQ(qorextctl::load_le(replies, at, 4), reply_id);
    EXPECT_PRED2(is_one_of, qorextctl::load_le(replies, at + 8, 4),
                 (std::initializer_list<uint32_t>{0, 3, 5, 6}));
    at += qorextctl::load_le(replies, at + 4, 4) + size_t{20};
    ++frames;
    if (at > replies.size()) break;
  }
  EXPECT_EQ(at, replies.size()) << as_hex(replies);
  EXPECT_EQ(frames, count);
}

void expect_valid_replies(Bytes request, const std::string& replies) {
  size_t size = request.size();
  request.resize(std::max<size_t>(size, 8));
  bool is_cdma = size >= 8 && qorextctl::load_be(request, 1, 3) == 2;
  if (!is_cdma) {
    Bytes head(request.begin(), request.begin() + 4);
    EXPECT_EQ(replies, as_hex(head + hex("FFFFFFFF")));
    return;
  }
  uint32_t id = qorextctl::load_le(request, 0, 4);
  expect_cdma_frames(hex(replies), id, frames_for(id, qorextctl::load_le(request, 4, 4)));
}

using RandomRequests = HandsetTest;

TEST_F(RandomRequests, GetValidReplies) {
  constexpr size_t kRequests = 500;
  RequestGenerator requests;
  for (size_t i = 0; i < kRequests && !HasFailure(); ++i) {
    Bytes request = requests.next();
    SCOPED_TRACE(as_hex(request));
    expect_valid_replies(request, handset.serve(request).replies);
  }
  expect_reply(cdma(kUnknownId), reply(kUnknownId, 6));
}

}  // namespace
}  // namespace e2e
