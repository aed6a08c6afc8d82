// SPDX-License-Identifier: Apache-2.0
// Writes files of the phone that other processes read.
#pragma once

#include <string>
#include <string_view>

namespace phone_files {

// Whether the name is a plain file name: letters, digits and "._@:-", not empty, no leading dot.
// Such a name cannot leave its folder.
bool is_plain_name(std::string_view name);

enum class Existing { replace, keep };

// Writes a temporary file and renames or links it to `path`, so that a reader sees the whole
// content or none. Creates missing folders. False on failure (errno is set; EEXIST: `keep` found a
// file).
bool store(const std::string& path, std::string_view content, Existing existing);

}  // namespace phone_files
