// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

struct Range {
  int64_t min;
  int64_t max;
};

constexpr int64_t power_of_two(size_t bits) { return int64_t{1} << bits; }

Range range_of(const Argument& argument) {
  if (argument.max != 0) return {argument.min, argument.max};
  size_t bits = 8 * width_of(argument.field.type);
  if (is_signed(argument.field.type)) return {-power_of_two(bits - 1), power_of_two(bits - 1) - 1};
  return {0, power_of_two(bits) - 1};
}

Range length_range(const Argument& argument) {
  if (argument.field.type == Type::code) return {kCodeSize, kCodeSize};
  if (argument.max != 0) return {argument.min, argument.max};
  return {0, std::numeric_limits<int64_t>::max()};
}

Error wrong(const Argument& argument, const std::string& what) {
  return usage_error(fmt::format("{}: {}", argument.field.name, what));
}

// Errors do not contain personal values: they are kept in the logs of scripts.
std::string quoted(const Argument& argument, const std::string& text) {
  bool is_open = argument.field.privacy == Privacy::open;
  return fmt::format("'{}'", is_open ? text : kMasked);
}

std::string shown(Range range, std::string_view unit) {
  if (range.min == range.max) return fmt::format("{} {}", range.min, unit);
  return fmt::format("{} to {} {}", range.min, range.max, unit);
}

std::optional<Error> check_length(const Argument& argument, size_t count, std::string_view unit) {
  Range range = length_range(argument);
  auto length = static_cast<int64_t>(count);
  if (length >= range.min && length <= range.max) return std::nullopt;
  return wrong(argument, fmt::format("{} {} given, {} expected", count, unit, shown(range, unit)));
}

Result<Encoded> encode_number(const Argument& argument, const std::string& text) {
  auto number = parse_number(text);
  if (!number) return wrong(argument, fmt::format("'{}' is not a number", text));
  Range range = range_of(argument);
  if (*number < range.min || *number > range.max) {
    return wrong(argument,
                 fmt::format("{} is out of range ({} to {})", text, range.min, range.max));
  }
  Encoded encoded;
  append_le(encoded.bytes, static_cast<uint32_t>(*number), width_of(argument.field.type));
  encoded.count = 1;
  return encoded;
}

Result<Encoded> encode_hex(const Argument& argument, const std::string& text) {
  auto bytes = parse_hex(text);
  if (!bytes)
    return wrong(argument, fmt::format("{} is not hex (pairs of digits)", quoted(argument, text)));
  if (auto error = check_length(argument, bytes->size(), "bytes")) return *error;
  return Encoded{*bytes, bytes->size()};
}

bool is_digit(char character) { return character >= '0' && character <= '9'; }
bool is_ascii(char character) { return character >= ' ' && character <= '~'; }

// Pads a field of fixed size with NULs, and appends one to a string.
Encoded padded(const Argument& argument, const std::string& text) {
  Encoded encoded{{text.begin(), text.end()}, text.size()};
  if (argument.field.type == Type::string) encoded.bytes.push_back(0);
  encoded.bytes.resize(std::max<size_t>(encoded.bytes.size(), argument.field.size));
  return encoded;
}

Result<Encoded> encode_characters(const Argument& argument, const std::string& text) {
  Type type = argument.field.type;
  std::string_view unit = type == Type::digits ? "digits" : "characters";
  if (type == Type::digits && !std::all_of(text.begin(), text.end(), is_digit)) {
    return wrong(argument, quoted(argument, text) + " has characters that are not digits");
  }
  if (type == Type::code && !std::all_of(text.begin(), text.end(), is_ascii)) {
    return wrong(argument, "a code has six ASCII characters");
  }
  if (auto error = check_length(argument, text.size(), unit)) return *error;
  return padded(argument, text);
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t end = text.find(separator); end != std::string::npos;
       end = text.find(separator, start)) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

// One element of a list: `numbers` values, separated by slashes.
Result<Bytes> encode_element(const Argument& argument, const std::string& text, size_t numbers) {
  auto parts = split(text, '/');
  Bytes bytes;
  for (const std::string& value_text : parts) {
    auto number = parse_number(value_text);
    bool fits = number && *number >= 0 && *number < power_of_two(32);
    if (!fits || parts.size() != numbers) {
      return wrong(argument, fmt::format("'{}' is not {}", text,
                                         numbers == 1 ? "a number" : "a pair such as 4139/1"));
    }
    append_le(bytes, static_cast<uint32_t>(*number), sizeof(uint32_t));
  }
  return bytes;
}

Result<Encoded> encode_list(const Argument& argument, const std::string& text) {
  size_t numbers = argument.field.type == Type::pairs ? 2 : 1;
  Encoded encoded;
  for (const std::string& element : text.empty() ? std::vector<std::string>{} : split(text, ',')) {
    auto bytes = encode_element(argument, element, numbers);
    if (!bytes) return bytes.error();
    encoded.bytes.insert(encoded.bytes.end(), bytes->begin(), bytes->end());
    ++encoded.count;
  }
  if (auto error = check_length(argument, encoded.count, "values")) return *error;
  return encoded;
}

std::string describe_length(const Argument& argument, std::string_view unit) {
  Range range = length_range(argument);
  if (argument.max == 0 && argument.field.type != Type::code) return std::string(unit);
  return shown(range, unit);
}

}  // namespace

Result<Encoded> encode(const Argument& argument, const std::string& text) {
  switch (argument.field.type) {
    case Type::hex:
      return encode_hex(argument, text);
    case Type::code:
    case Type::digits:
    case Type::text:
    case Type::string:
      return encode_characters(argument, text);
    case Type::numbers:
    case Type::pairs:
      return encode_list(argument, text);
    default:
      return encode_number(argument, text);
  }
}

std::string describe(const Argument& argument) {
  switch (argument.field.type) {
    case Type::hex:
      return describe_length(argument, "hex bytes");
    case Type::code:
    case Type::text:
    case Type::string:
      return describe_length(argument, "characters");
    case Type::digits:
      return describe_length(argument, "digits");
    case Type::numbers:
      return describe_length(argument, "numbers");
    case Type::pairs:
      return describe_length(argument, "pairs");
    default: {
      Range range = range_of(argument);
      return fmt::format("{} to {}", range.min, range.max);
    }
  }
}

std::optional<int64_t> parse_number(std::string_view text) {
  bool negative = !text.empty() && text.front() == '-';
  if (negative) text.remove_prefix(1);
  int base = 10;
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
    base = 16;
    text.remove_prefix(2);
  }
  uint32_t number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return negative ? -int64_t{number} : int64_t{number};
}

}  // namespace qorextctl
