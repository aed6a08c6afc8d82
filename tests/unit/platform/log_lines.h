// SPDX-License-Identifier: Apache-2.0
// The test program's own Android log: it takes the place of the library.
#pragma once

#include <string>
#include <vector>

namespace client_test {

// What was logged since the last call: "TAG: TEXT", errors only.
std::vector<std::string> take_log_lines();

}  // namespace client_test
