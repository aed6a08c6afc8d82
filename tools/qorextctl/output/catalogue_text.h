// SPDX-License-Identifier: Apache-2.0
// The request catalogue for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

// One line a request; with a single request, its arguments and its reply's fields too,
// one a line.
std::string catalogue_text(const std::vector<const Request*>& requests);

// What stands for an argument that is not given.
std::string default_text(const Default& otherwise);

// "0x02000016"; "any" for those that take any id.
std::string any_or_id(const Request& request);

Json catalogue_json(const Request& request);

}  // namespace qorextctl
