// SPDX-License-Identifier: Apache-2.0
// The tables that requests are built by and frames are decoded by.
#pragma once

#include "protocol/frame.h"
#include "protocol/nv_items.h"
#include "protocol/request.h"
#include "protocol/unsolicited.h"

// The tool works on the tables everywhere, so their names are its own.
namespace qorextctl {
using namespace protocol;
}  // namespace qorextctl
