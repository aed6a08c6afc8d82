// SPDX-License-Identifier: Apache-2.0
// Arguments from a JSON record, such as the output of `qorextctl request get-nam --json`.
#pragma once

#include <map>
#include <string>

#include "tools/qorextctl/base/result.h"

namespace qorextctl {

// The members of a JSON object: argument names and values as text. Also accepts a printed reply,
// whose "fields" are the record.
Result<std::map<std::string, std::string>> parse_record(const std::string& text);

// Reads a file, or standard input for the name "-" if it is free.
Result<std::map<std::string, std::string>> read_record(const std::string& file, bool stdin_free);

}  // namespace qorextctl
