// SPDX-License-Identifier: Apache-2.0
// For callers that cannot continue after an error.
#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "tools/qorextctl/base/result.h"

namespace e2e {

template <class T>
T value_or_throw(qorextctl::Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}

// Throws errno as an error about `what`.
[[noreturn]] inline void throw_errno(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace e2e
