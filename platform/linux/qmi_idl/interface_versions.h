// SPDX-License-Identifier: Apache-2.0
// The interface versions that the service objects are given for: those that the daemon asks for.
#pragma once

#include <stdint.h>

namespace qmi_idl {

struct InterfaceVersion {
  int32_t major;
  int32_t minor;
  int32_t tool;

  bool operator==(const InterfaceVersion&) const = default;
};

constexpr InterfaceVersion kNasInterface = {1, 175, 6};
constexpr InterfaceVersion kDmsInterface = {1, 56, 6};
constexpr InterfaceVersion kQorextInterface = {1, 1, 4};

}  // namespace qmi_idl
