// SPDX-License-Identifier: Apache-2.0
// Bytes as hexadecimal text, as JSON and scenario files carry them.
#pragma once

#include <stdint.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qmi_json {

using Bytes = std::vector<uint8_t>;

// Two lower-case digits a byte.
std::string to_hex(std::span<const uint8_t> bytes);

// Digits of either case; blanks between the bytes are passed over. Nothing for any other text.
std::optional<Bytes> from_hex(std::string_view text);

}  // namespace qmi_json
