// SPDX-License-Identifier: Apache-2.0
// The request catalogue as text and as JSON.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// Returns one line per request. A single request also has a line for each argument and each field
// of its reply.
std::string catalogue_text(const std::vector<const Request*>& requests);

// Describes the default of an argument.
std::string default_text(const Default& otherwise);

// For example "0x02000016", or "any" for a request that accepts any id.
std::string any_or_id(const Request& request);

Json catalogue_json(const Request& request);

}  // namespace qorextctl
