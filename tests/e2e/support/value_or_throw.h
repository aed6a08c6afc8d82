// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <utility>

#include "tools/qorextctl/base/result.h"

namespace e2e {

// For callers that cannot go on without the value.
template <class T>
T value_or_throw(qorextctl::Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}

}  // namespace e2e
