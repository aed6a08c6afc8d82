// SPDX-License-Identifier: Apache-2.0
// Random requests: the daemon lives, and answers each of them by the rules.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/e2e/support/handset.h"

namespace e2e {
namespace {

constexpr size_t kRequests = 500;
constexpr uint32_t kSeed = 20260917;
constexpr size_t kMaxPayload = 600;

class RandomRequests {
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
  // A length that may fit the payload, or that nothing can fit.
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

// How many frames answer a CDMA-hook request: these ids get a second one, "not supported".
size_t frames_for(uint32_t id, uint32_t length) {
  if (id == 0x020000B5) return length == 0 ? 1 : 2;
  return id == 0x02000013 ? 2 : 1;
}

// All bytes are whole frames with the request's id (a query for band class 14 is answered with that
// for band class 10) and a status that there is.
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

void expect_by_the_rules(Bytes request, const std::string& replies) {
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

TEST(Garbage, LeavesTheDaemonServing) {
  Handset handset;
  RandomRequests requests;
  for (size_t i = 0; i < kRequests && !testing::Test::HasFailure(); ++i) {
    Bytes request = requests.next();
    SCOPED_TRACE(as_hex(request));
    expect_by_the_rules(request, handset.serve(request).replies);
  }
  EXPECT_EQ(handset.serve(cdma(0x02000014)).replies, as_hex(reply(0x02000014, 6)));
}

}  // namespace
}  // namespace e2e
