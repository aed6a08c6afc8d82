// SPDX-License-Identifier: Apache-2.0
#include "modem/state/archive.h"

#include <algorithm>

namespace modem {
namespace {

std::string sizes_text(Sizes sizes) {
  if (sizes.min == sizes.max) return std::to_string(sizes.max);
  return std::to_string(sizes.min) + " to " + std::to_string(sizes.max);
}

bool allows(Sizes sizes, size_t size) { return size >= sizes.min && size <= sizes.max; }

bool is_digit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

std::string Archive::range_text(int64_t low, int64_t high) {
  return std::to_string(low) + " to " + std::to_string(high);
}

std::string Archive::list_text(size_t max) {
  return "at most " + std::to_string(max) + " numbers, ";
}

bool Archive::text(const char* key, std::string& value, Sizes sizes, Privacy privacy) {
  if (!is_reading()) {
    return write(key, value, {Type::string, "string, " + sizes_text(sizes) + " bytes", privacy});
  }
  const std::string* given = take_string(key);
  if (given == nullptr) return false;
  check_size(key, given->size(), sizes, "bytes");
  value = *given;
  return true;
}

bool Archive::digits(const char* key, std::string& value, Sizes sizes, Privacy privacy) {
  if (!is_reading()) {
    return write(key, value, {Type::string, "string, " + sizes_text(sizes) + " digits", privacy});
  }
  const std::string* given = take_string(key);
  if (given == nullptr) return false;
  if (!std::all_of(given->begin(), given->end(), is_digit)) {
    refuse(key, "expected " + sizes_text(sizes) + " digits");
  }
  check_size(key, given->size(), sizes, "digits");
  value = *given;
  return true;
}

bool Archive::hex(const char* key, qmi_json::Bytes& value, Sizes sizes, Privacy privacy) {
  if (!is_reading()) {
    return write(key, qmi_json::to_hex(value),
                 {Type::string, "hex string, " + sizes_text(sizes) + " bytes", privacy});
  }
  const std::string* given = take_string(key);
  if (given == nullptr) return false;
  auto bytes = qmi_json::from_hex(*given);
  if (!bytes) refuse(key, "expected hexadecimal digits, two per byte");
  check_size(key, bytes->size(), sizes, "bytes");
  value = *bytes;
  return true;
}

bool Archive::flag(const char* key, bool& value) {
  if (!is_reading()) return write(key, value, {Type::flag, "true or false"});
  const json* given = take(key);
  if (given == nullptr) return false;
  if (!given->is_boolean()) refuse(key, "expected true or false");
  value = given->get<bool>();
  return true;
}

bool Archive::raw(const char* key, json& value) {
  if (!is_reading()) return write(key, value, {Type::any, "any value"});
  const json* given = take(key);
  if (given != nullptr) value = *given;
  return given != nullptr;
}

bool Archive::numbers(const char* key, std::vector<uint32_t>& values, size_t max) {
  if (!is_reading()) {
    return write(key, values, {Type::numbers, list_text(max) + range_text(0, UINT32_MAX)});
  }
  const json* given = take_list(key, max);
  if (given == nullptr) return false;
  values.clear();
  for (const json& item : *given) {
    values.push_back(
        static_cast<uint32_t>(checked_number(item, path_of(key, values.size()), 0, UINT32_MAX)));
  }
  return true;
}

int64_t Archive::checked_number(const json& value, const std::string& path, int64_t low,
                                int64_t high) {
  std::string range = "(" + range_text(low, high) + ")";
  if (!value.is_number_integer()) throw ArchiveError(path, "expected a number " + range);
  bool is_wide = value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX;
  if (is_wide || value.get<int64_t>() < low || value.get<int64_t>() > high) {
    throw ArchiveError(path, value.dump() + " is out of range " + range);
  }
  return value.get<int64_t>();
}

// The value itself stays out of the message: it may be a code or a subscriber's number.
void Archive::check_size(const char* key, size_t size, Sizes sizes, const char* unit) const {
  if (allows(sizes, size)) return;
  refuse(key, "has " + std::to_string(size) + " " + unit + ", expected " + sizes_text(sizes));
}

const Archive::json* Archive::take(const char* key) {
  known_.insert(key);
  auto found = in_->find(key);
  return found == in_->end() ? nullptr : &*found;
}

const Archive::json* Archive::take_list(const char* key, size_t max) {
  const json* given = take(key);
  if (given == nullptr) return nullptr;
  if (!given->is_array()) refuse(key, "expected a list");
  check_size(key, given->size(), up_to(max), "entries");
  return given;
}

const std::string* Archive::take_string(const char* key) {
  const json* given = take(key);
  if (given == nullptr) return nullptr;
  if (!given->is_string()) refuse(key, "expected a string");
  return given->get_ptr<const std::string*>();
}

void Archive::require_object() const {
  if (!in_->is_object()) throw ArchiveError(path_, "expected a table of keys and values");
}

void Archive::refuse_unknown() const {
  for (const auto& [key, value] : in_->items()) {
    if (known_.count(key) == 0) throw ArchiveError(path_of(key), "unknown key");
  }
}

std::string Archive::path_of(const std::string& key) const {
  return path_.empty() ? key : path_ + "." + key;
}

std::string Archive::path_of(const std::string& key, size_t index) const {
  return path_of(key) + "[" + std::to_string(index) + "]";
}

}  // namespace modem
