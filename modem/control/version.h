// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace modem {

constexpr const char* kVersion = QOREXT_VERSION;

}  // namespace modem
