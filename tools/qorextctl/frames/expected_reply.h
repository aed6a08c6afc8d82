// SPDX-License-Identifier: Apache-2.0
// Which reply belongs to a request.
#pragma once

#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// What the daemon answers to the bytes of a request.
struct Expected {
  const Request* request;  // the row that describes the reply; null for an id without one
  ReplyForm form;
  uint32_t id;
  int replies;
};
// `named` is the row that the request was built from; null for raw bytes.
Expected expect_reply(View request, const Request* named);

}  // namespace qorextctl
