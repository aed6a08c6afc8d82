// SPDX-License-Identifier: Apache-2.0
// Recognizes the kind of a frame by its bytes.
#pragma once

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

enum class FrameKind { request, reply, unsolicited };

// "request", "reply", "unsolicited".
const char* name_of(FrameKind kind);

// Uses the header and the length. Returns nothing for other bytes. A generic header without data
// may be a request or a reply; it is treated as a request.
std::optional<FrameKind> recognise(View frame);

DecodedFrame decode_as(FrameKind kind, View frame);

}  // namespace qorextctl
