// SPDX-License-Identifier: Apache-2.0
// Arguments from a JSON record: what `qorextctl request get-nam --json` prints, edited and given
// back.
#pragma once

#include <map>
#include <string>

#include "tools/qorextctl/base/result.h"

namespace qorextctl {

// The members of a JSON object, keys as argument names, values as text. A whole printed reply is
// accepted too: its "fields" are the record.
Result<std::map<std::string, std::string>> parse_record(const std::string& text);

// The same from a file, or from standard input for the name "-" where that is free.
Result<std::map<std::string, std::string>> read_record(const std::string& file, bool stdin_free);

}  // namespace qorextctl
