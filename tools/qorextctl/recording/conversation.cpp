// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/conversation.h"

namespace qorextctl {

DecodedFrame Conversation::decode(FrameKind kind, View frame) {
  if (kind == FrameKind::request) expected_ = expect_reply(frame, nullptr);
  if (kind != FrameKind::reply || !expected_) return decode_as(kind, frame);
  return decode_reply(expected_->request, expected_->form, expected_->id, frame);
}

}  // namespace qorextctl
