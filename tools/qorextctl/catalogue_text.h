// The request catalogue for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "decode.h"
#include "request.h"

namespace qorextctl {

// One line a request; with a single request, its arguments too, one a line.
std::string catalogue_text(const std::vector<const Request*>& requests);

Json catalogue_json(const Request& request);

}  // namespace qorextctl
