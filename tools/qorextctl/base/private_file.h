// SPDX-License-Identifier: Apache-2.0
// Files that only their owner may read.
#pragma once

#include <string>

#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

// Opens for writing with these flags of open(2) besides; creates the file where there is none. A
// regular file that was there before becomes private, too. Not valid when that fails; errno is set.
UniqueFd open_private(const std::string& path, int flags);

}  // namespace qorextctl
