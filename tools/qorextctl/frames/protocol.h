// SPDX-License-Identifier: Apache-2.0
// The tables by which requests are built and frames are decoded.
#pragma once

#include "protocol/frame.h"
#include "protocol/nv_items.h"
#include "protocol/request.h"
#include "protocol/unsolicited.h"

// Most of the tool works on the tables, so their names need no prefix.
namespace qorextctl {
using namespace protocol;
}  // namespace qorextctl
