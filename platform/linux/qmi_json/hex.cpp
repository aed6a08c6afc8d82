// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_json/hex.h"

namespace qmi_json {
namespace {

int digit_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

}  // namespace

std::string to_hex(std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

std::optional<Bytes> from_hex(std::string_view text) {
  Bytes bytes;
  while (!text.empty()) {
    if (text.front() == ' ') {
      text.remove_prefix(1);
      continue;
    }
    if (text.size() < 2) return std::nullopt;
    int high = digit_value(text[0]);
    int low = digit_value(text[1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(high << 4 | low));
    text.remove_prefix(2);
  }
  return bytes;
}

}  // namespace qmi_json
