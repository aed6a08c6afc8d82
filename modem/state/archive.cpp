// SPDX-License-Identifier: Apache-2.0
#include "modem/state/archive.h"

#include <algorithm>

namespace modem {
namespace {

std::string sizes_text(Sizes sizes) {
  if (sizes.least == sizes.most) return std::to_string(sizes.most);
  return std::to_string(sizes.least) + " to " + std::to_string(sizes.most);
}

bool holds(Sizes sizes, size_t size) { return size >= sizes.least && size <= sizes.most; }

}  // namespace

std::string Archive::range_text(int64_t low, int64_t high) {
  return std::to_string(low) + " to " + std::to_string(high);
}

std::string Archive::list_text(size_t most) {
  return "at most " + std::to_string(most) + " numbers, ";
}

bool Archive::text(const char* key, std::string& value, Sizes sizes) {
  if (!reading()) return write(key, value, "text, " + sizes_text(sizes) + " bytes");
  const std::string* given = take_text(key);
  if (given == nullptr) return false;
  if (!holds(sizes, given->size())) refuse(key, "wants " + sizes_text(sizes) + " characters");
  value = *given;
  return true;
}

bool Archive::digits(const char* key, std::string& value, Sizes sizes) {
  if (!reading()) return write(key, value, "text, " + sizes_text(sizes) + " digits");
  const std::string* given = take_text(key);
  if (given == nullptr) return false;
  bool all_digits = std::all_of(given->begin(), given->end(),
                                [](char digit) { return digit >= '0' && digit <= '9'; });
  if (!all_digits || !holds(sizes, given->size())) {
    refuse(key, "wants a text of " + sizes_text(sizes) + " digits");
  }
  value = *given;
  return true;
}

bool Archive::hex(const char* key, qmi_json::Bytes& value, Sizes sizes) {
  if (!reading()) {
    return write(key, qmi_json::to_hex(value), "hex text, " + sizes_text(sizes) + " bytes");
  }
  const std::string* given = take_text(key);
  if (given == nullptr) return false;
  auto bytes = qmi_json::from_hex(*given);
  if (!bytes) refuse(key, "wants hexadecimal digits, two a byte");
  if (!holds(sizes, bytes->size())) refuse(key, "wants " + sizes_text(sizes) + " bytes");
  value = *bytes;
  return true;
}

bool Archive::flag(const char* key, bool& value) {
  if (!reading()) return write(key, value, "true or false");
  const json* given = take(key);
  if (given == nullptr) return false;
  if (!given->is_boolean()) refuse(key, "wants true or false");
  value = given->get<bool>();
  return true;
}

bool Archive::raw(const char* key, json& value) {
  if (!reading()) return write(key, value, "any value");
  const json* given = take(key);
  if (given != nullptr) value = *given;
  return given != nullptr;
}

bool Archive::numbers(const char* key, std::vector<uint32_t>& values, size_t most) {
  if (!reading()) return write(key, values, list_text(most) + range_text(0, UINT32_MAX));
  const json* given = take_list(key, most);
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
  bool is_wide = value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX;
  if (!value.is_number_integer() || is_wide || value.get<int64_t>() < low ||
      value.get<int64_t>() > high) {
    throw ArchiveError(
        path, "wants a number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return value.get<int64_t>();
}

const Archive::json* Archive::take(const char* key) {
  known_.insert(key);
  auto found = in_->find(key);
  return found == in_->end() ? nullptr : &*found;
}

const Archive::json* Archive::take_list(const char* key, size_t most) {
  const json* given = take(key);
  if (given == nullptr) return nullptr;
  if (!given->is_array()) refuse(key, "wants a list");
  if (given->size() > most) refuse(key, "has room for " + std::to_string(most) + " entries");
  return given;
}

const std::string* Archive::take_text(const char* key) {
  const json* given = take(key);
  if (given == nullptr) return nullptr;
  if (!given->is_string()) refuse(key, "wants a text");
  return given->get_ptr<const std::string*>();
}

void Archive::require_object() const {
  if (!in_->is_object()) throw ArchiveError(path_, "wants named values");
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
