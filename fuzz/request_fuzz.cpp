// SPDX-License-Identifier: Apache-2.0
// Requests from the bytes on the pipe through dispatch, handler and modem to the replies.
#include "src/host/host.h"

#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "src/host/base/framing.h"

namespace {

using fuzz::Bytes;

constexpr size_t kMaxRequests = 20;
constexpr size_t kGenericErrorSize = 8;
constexpr size_t kDataPlmnSize = 568;
constexpr uint32_t kAllOnes = 0xFFFFFFFF;

constexpr uint32_t kBand10 = 0x020000B0;
constexpr uint32_t kBand14 = 0x020000B2;
constexpr uint32_t kSetProfile = 0x020000B5;
constexpr uint32_t kWriteAkey = 0x02000013;
constexpr uint32_t kDataPlmn = 0x60001;

bool is_cdma(const Bytes& request) {
  return request.size() >= kGenericHeaderSize && load_be24(&request[kGenericId]) == 2;
}

// Two requests get a second reply, "not supported".
size_t expected_replies(const Bytes& request) {
  if (!is_cdma(request)) return 1;
  uint32_t id = cdma_id(request.data());
  bool has_payload = cdma_length(request.data()) != 0;
  return id == kWriteAkey || (id == kSetProfile && has_payload) ? 2 : 1;
}

void check_cdma_reply(uint32_t id, const Bytes& reply) {
  FUZZ_REQUIRE(reply.size() >= kCdmaReplySize);
  FUZZ_REQUIRE(reply.size() == size_t{cdma_length(reply.data())} + kCdmaReplySize);
  FUZZ_REQUIRE(cdma_id(reply.data()) == (id == kBand14 ? kBand10 : id));
  FUZZ_REQUIRE(load_le32(&reply[kCdmaStatus]) <= kStatusNotSupported);
}

bool is_generic_error(const Bytes& reply) {
  return reply.size() == kGenericErrorSize && load_le32(&reply[kGenericLength]) == kAllOnes;
}

void check_generic_reply(const Bytes& request, const Bytes& reply) {
  if (is_generic_error(reply)) return;
  if (load_be24(&request[kGenericId]) == kDataPlmn) {
    FUZZ_REQUIRE(reply.size() == kDataPlmnSize);
    return;
  }
  FUZZ_REQUIRE(reply.size() > kGenericHeaderSize || load_le32(&reply[kGenericLength]) == 0);
  FUZZ_REQUIRE(reply.size() == size_t{load_le32(&reply[kGenericLength])} + kGenericHeaderSize);
  FUZZ_REQUIRE(memcmp(reply.data(), request.data(), kGenericLength) == 0);
}

void check_replies(const Bytes& request) {
  const std::vector<Bytes>& replies = fuzz::phone().replies;
  FUZZ_REQUIRE(replies.size() == expected_replies(request));
  FUZZ_REQUIRE(fuzz::phone().unsolicited.empty());
  for (const Bytes& reply : replies) {
    if (is_cdma(request)) {
      check_cdma_reply(cdma_id(request.data()), reply);
    } else {
      check_generic_reply(request, reply);
    }
  }
}

// Generates requests, and checks the replies to each one before the next.
class Parent {
 public:
  explicit Parent(fuzz::Phone& phone) : phone_(phone) {}

  Bytes next() {
    if (!request_.empty()) check_replies(request_);
    phone_.replies.clear();
    bool is_end = phone_.input.remaining_bytes() == 0 || ++count_ > kMaxRequests;
    auto size = phone_.input.ConsumeIntegralInRange<size_t>(0, kRequestSize);
    request_ = is_end ? Bytes() : phone_.input.ConsumeBytes<uint8_t>(size);
    return request_;
  }

 private:
  fuzz::Phone& phone_;
  Bytes request_;
  size_t count_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::bring_up();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  Parent parent(phone);
  phone.next_request = [&parent] { return parent.next(); };
  serve_requests(fuzz::kRequestFd);
  return 0;
}
