// SPDX-License-Identifier: Apache-2.0
// Builds requests, and finds the ends of replies and unsolicited frames on their pipes.
#pragma once

#include <array>
#include <optional>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// A length field that states more is corrupt.
constexpr size_t kMaxFrameBytes = 65536;

struct RequestDraft {
  Family family = Family::cdma;
  uint32_t id = 0;
  uint8_t type = 1;                       // generic requests
  uint32_t status = 0;                    // CDMA-hook requests
  std::array<uint8_t, kCodeSize> code{};  // CDMA-hook requests
  Bytes payload = {};
};
Bytes build(const RequestDraft& draft);

// How the daemon classifies the bytes of a request.
struct Classified {
  enum class Kind { unknown, generic, cdma } kind;
  uint32_t id;
};
Classified classify(View request);

// The size of the first frame; nothing while its header is not complete. For a corrupt length
// field, the number of all bytes present: no later frame can be found.
std::optional<size_t> reply_size(View bytes, ReplyForm form);
std::optional<size_t> unsolicited_size(View bytes);

// Collects the bytes read from a pipe, in pieces of any size.
class FrameBuffer {
 public:
  void append(View bytes);
  View pending() const { return View(bytes_).subspan(start_); }

  // Removes and returns the first frame; nothing while it is not complete. `size_of` is one of the
  // two above.
  template <class SizeOf>
  std::optional<Bytes> take(SizeOf size_of) {
    std::optional<size_t> size = size_of(pending());
    if (!size || *size > pending().size() || *size == 0) return std::nullopt;
    return take_bytes(*size);
  }
  Bytes take_all() { return take_bytes(pending().size()); }

 private:
  Bytes take_bytes(size_t size);

  Bytes bytes_;
  size_t start_ = 0;  // of the bytes that have not been taken
};

// The reply of the daemon to the bytes of a request.
struct Expected {
  const Request* request;  // the row that describes the reply; null for an id without one
  ReplyForm form;
  uint32_t id;
  int replies;
};
// `named` is the row that the request was built from; null for raw bytes.
Expected expect_reply(View request, const Request* named);

}  // namespace qorextctl
