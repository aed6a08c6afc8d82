#pragma once

namespace modem {

constexpr const char* kVersion = QOREXT_VERSION;

}  // namespace modem
