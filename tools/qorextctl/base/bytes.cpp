// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/bytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qorextctl {

namespace {

uint8_t byte_at(View bytes, size_t offset) { return offset < bytes.size() ? bytes[offset] : 0; }

int digit_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool is_separator(char character) { return character == ' ' || character == ':'; }

// The JSON library throws if a text is not valid UTF-8.
bool is_utf8(const std::string& text) {
  try {
    return !nlohmann::json(text).dump().empty();
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

}  // namespace

uint32_t load_le(View bytes, size_t offset, size_t width) {
  uint32_t value = 0;
  for (size_t i = width; i > 0; --i) value = value << 8 | byte_at(bytes, offset + i - 1);
  return value;
}

uint32_t load_be(View bytes, size_t offset, size_t width) {
  uint32_t value = 0;
  for (size_t i = 0; i < width; ++i) value = value << 8 | byte_at(bytes, offset + i);
  return value;
}

void append_le(Bytes& bytes, uint32_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void append_be(Bytes& bytes, uint32_t value, size_t width) {
  for (size_t i = width; i > 0; --i) bytes.push_back(static_cast<uint8_t>(value >> (8 * (i - 1))));
}

bool all_zero(View bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

View part(View bytes, size_t offset, size_t size) {
  if (offset >= bytes.size()) return {};
  return bytes.subspan(offset, std::min(size, bytes.size() - offset));
}

std::string to_hex(View bytes) { return fmt::format("{:02X}", fmt::join(bytes, "")); }

std::optional<Bytes> parse_hex(std::string_view text) {
  Bytes bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (is_separator(text[i])) continue;
    int high = digit_value(text[i]);
    int low = i + 1 < text.size() ? digit_value(text[i + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(high << 4 | low));
    ++i;
  }
  return bytes;
}

std::string printable(View text) {
  bool is_text_utf8 = is_utf8({text.begin(), text.end()});
  std::string shown;
  for (uint8_t byte : text) {
    bool is_plain = byte >= 0x80 ? is_text_utf8 : byte >= ' ' && byte != 0x7F;
    shown += is_plain ? std::string(1, static_cast<char>(byte)) : fmt::format("\\x{:02X}", byte);
  }
  return shown;
}

std::string printable(std::string_view text) {
  return printable(View(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

std::string beginning_of(std::string_view text) {
  constexpr size_t kMaxShown = 200;
  return printable(text.substr(0, kMaxShown)) + (text.size() > kMaxShown ? "..." : "");
}

}  // namespace qorextctl
