// SPDX-License-Identifier: Apache-2.0
// Names as people type them.
#pragma once

#include <string>
#include <vector>

namespace qorextctl {

// The name that differs least, when that is no more than two typing mistakes; else empty.
std::string nearest(const std::string& name, const std::vector<std::string>& names);

// "rde_id" is taken for "rde-id", and the other way round for JSON keys.
std::string argument_name(std::string name);
std::string json_key(std::string name);

}  // namespace qorextctl
