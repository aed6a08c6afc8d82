// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace e2e {

// Longer than anything that works can take, even on a loaded machine under a sanitizer.
constexpr std::chrono::seconds kPatience{40};

}  // namespace e2e
