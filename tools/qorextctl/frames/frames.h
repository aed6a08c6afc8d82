// SPDX-License-Identifier: Apache-2.0
// The frames on the three pipes: building requests, telling where a reply or an unsolicited frame
// ends.
#pragma once

#include <array>
#include <optional>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// A frame that claims to be longer has a broken length field.
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

// How the daemon will take the bytes of a request.
struct Classified {
  enum class Kind { unknown, generic, cdma } kind;
  uint32_t id;
};
Classified classify(View request);

// The size of the frame that the bytes begin with; nothing while its header is not whole. A length
// field that cannot be gives the size of all bytes present: they are beyond repair.
std::optional<size_t> reply_size(View bytes, ReplyForm form);
std::optional<size_t> unsolicited_size(View bytes);

// Bytes as they came from a pipe, in pieces of any size.
class FrameBuffer {
 public:
  void append(View bytes);
  View pending() const { return View(bytes_).subspan(start_); }

  // Takes the first frame out; nothing while it is not whole. `size_of` is one of the two above.
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
  size_t start_ = 0;  // of what has not been taken
};

}  // namespace qorextctl
