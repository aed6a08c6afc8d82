// SPDX-License-Identifier: Apache-2.0
// The GSM 7-bit default alphabet (3GPP TS 23.038), one character per byte, without its extension
// table. The daemon has a table of its own: this one checks it.
#pragma once

#include <optional>
#include <string_view>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

// Nothing if the UTF-8 text has a character outside the alphabet.
std::optional<qmi_json::Bytes> encode_gsm(std::string_view utf8);

}  // namespace modem
