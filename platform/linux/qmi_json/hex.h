// SPDX-License-Identifier: Apache-2.0
// Bytes as hexadecimal digits, as in JSON and scenario files.
#pragma once

#include <stdint.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qmi_json {

using Bytes = std::vector<uint8_t>;

// Two lower-case digits for each byte.
std::string to_hex(std::span<const uint8_t> bytes);

// Accepts digits of either case and skips spaces between bytes. Returns nullopt for any other text.
std::optional<Bytes> from_hex(std::string_view text);

}  // namespace qmi_json
