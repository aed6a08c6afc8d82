// SPDX-License-Identifier: Apache-2.0
// Frames of which nobody says what they are.
#pragma once

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

enum class FrameKind { request, reply, unsolicited };

// "request", "reply", "unsolicited".
const char* name_of(FrameKind kind);

// By header and length; nothing when it can be none of the three. A generic header without data
// begins a request and a reply alike: it is taken as a request.
std::optional<FrameKind> recognise(View frame);

DecodedFrame decode_as(FrameKind kind, View frame);

}  // namespace qorextctl
