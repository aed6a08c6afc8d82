// SPDX-License-Identifier: Apache-2.0
// The frames of one daemon, decoded in their order: what a reply holds is told by the request in
// front of it.
#pragma once

#include <optional>

#include "tools/qorextctl/frames/expected_reply.h"
#include "tools/qorextctl/frames/frame_kind.h"

namespace qorextctl {

class Conversation {
 public:
  DecodedFrame decode(FrameKind kind, View frame);

  // Of the last request; nothing before the first one.
  const std::optional<Expected>& expected() const { return expected_; }

 private:
  std::optional<Expected> expected_;
};

}  // namespace qorextctl
