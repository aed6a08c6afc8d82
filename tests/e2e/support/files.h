// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace e2e {

// Everything in the file; empty when there is none.
std::string content_of(const std::string& path);

}  // namespace e2e
