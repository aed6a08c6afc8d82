// SPDX-License-Identifier: Apache-2.0
// The parser of scenario files limits values within values, not the parts of a key, and destroys
// what it has made by recursion. So a file is measured, in one pass, before the parser sees it.
#pragma once

#include <cstddef>
#include <string_view>

namespace modem {

// Tables and lists within one another: parts of keys and of headers, brackets.
constexpr size_t kMaxTomlLevels = 64;

// The number of the first line, counted from 1, on which a file goes deeper; 0 when none does. A
// fraction's point counts as a key's. What follows an error of syntax does not matter.
size_t find_excess_levels(std::string_view toml);

}  // namespace modem
