// SPDX-License-Identifier: Apache-2.0
// Files of the phone that libraries of the workstation write for others to read.
#pragma once

#include <string>
#include <string_view>

namespace phone_files {

// A name that stays inside its folder: letters, digits and "._@:-", not empty, no leading dot.
bool is_plain_name(std::string_view name);

enum class Existing { replace, keep };

// Writes the file under another name and then gives it its own, so that a reader finds all of it or
// nothing; creates its folders. False when that fails (errno is set; EEXIST: a file is kept).
bool store(const std::string& path, std::string_view content, Existing existing);

}  // namespace phone_files
