// SPDX-License-Identifier: Apache-2.0
// Reads named values from JSON, writes them as JSON or lists their keys, in one walk, so that the
// name, type and limits of a value are stated once. Reading accepts a partial object: a value that
// is not named stays as it is; a wrong name or value throws ArchiveError.
//
// A structure T takes part by a function describe(Archive&, T&) in its own namespace.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

// what() is the error; `path` is the key it is about, as "lte.mcc" or "operators[1].mnc".
struct ArchiveError : std::invalid_argument {
  ArchiveError(std::string where, const std::string& what)
      : std::invalid_argument(what), path(std::move(where)) {}

  std::string describe() const { return path.empty() ? what() : path + ": " + what(); }

  std::string path;
};

struct Sizes {
  size_t min;
  size_t max;
};
constexpr Sizes exactly(size_t size) { return {size, size}; }
constexpr Sizes up_to(size_t size) { return {0, size}; }

// Of the name of a message, a service or a kind of fault, in bytes.
constexpr size_t kMaxName = 64;

// Whether a value identifies the subscriber, unlocks something, or may hold bytes that do.
enum class Privacy : uint8_t { open, personal };

struct Key {
  enum class Type : uint8_t { number, string, flag, numbers, tables, any };

  std::string path;  // "lte.mcc"; "operators[]" is a list of tables, "operators[].mnc" a key of one
  Type type;
  Privacy privacy;
  std::string accepts;  // for people: "number, 0 to 999"
  std::string value;    // now, as JSON; empty for a key that has to be given
};

template <typename T>
concept Integer = std::is_integral_v<T>;

// The range of an integer of at most 32 bits.
template <Integer T>
constexpr int64_t kLowest = std::is_signed_v<T> ? -(int64_t{1} << (8 * sizeof(T) - 1)) : 0;
template <Integer T>
constexpr int64_t kHighest = (int64_t{1} << (8 * sizeof(T) - (std::is_signed_v<T> ? 1 : 0))) - 1;

class Archive {
 public:
  using json = nlohmann::json;

  bool is_reading() const { return in_ != nullptr; }
  bool is_listing() const { return keys_ != nullptr; }

  // Each returns whether the value was named (always true when not reading).
  template <Integer T>
  bool number(const char* key, T& value, int64_t low = kLowest<T>, int64_t high = kHighest<T>) {
    if (!is_reading()) return write(key, value, {Type::number, "number, " + range_text(low, high)});
    const json* given = take(key);
    if (given != nullptr) value = static_cast<T>(checked_number(*given, path_of(key), low, high));
    return given != nullptr;
  }

  // Sizes of strings are in bytes of UTF-8, in digits, and in the bytes that hex digits represent.
  bool text(const char* key, std::string& value, Sizes sizes, Privacy privacy = Privacy::open);
  bool digits(const char* key, std::string& value, Sizes sizes, Privacy privacy = Privacy::open);
  bool hex(const char* key, qmi_json::Bytes& value, Sizes sizes, Privacy privacy = Privacy::open);

  bool flag(const char* key, bool& value);
  bool raw(const char* key, json& value);

  bool numbers(const char* key, std::vector<uint32_t>& values, size_t max);

  // A fixed number of numbers; those after the given ones become zero.
  template <Integer T, size_t N>
  bool numbers(const char* key, T (&values)[N]) {
    if (!is_reading()) {
      return write(key, std::vector<T>(values, values + N),
                   {Type::numbers, list_text(N) + range_text(kLowest<T>, kHighest<T>)});
    }
    const json* given = take_list(key, N);
    if (given == nullptr) return false;
    std::fill_n(values, N, T{});
    for (size_t i = 0; i < given->size(); ++i) {
      values[i] =
          static_cast<T>(checked_number((*given)[i], path_of(key, i), kLowest<T>, kHighest<T>));
    }
    return true;
  }

  template <typename T>
  bool section(const char* key, T& object) {
    if (is_listing()) return list_keys(object, path_of(key));
    if (!is_reading()) return write(key, to_json(object), {Type::any, ""});
    const json* given = take(key);
    if (given != nullptr) from_json(*given, path_of(key), object);
    return given != nullptr;
  }

  // Given entries replace all that are there.
  template <typename T>
  bool list(const char* key, std::vector<T>& objects, size_t max) {
    if (is_listing()) return list_entry_keys<T>(path_of(key), max);
    if (!is_reading()) return write_list(key, objects);
    const json* given = take_list(key, max);
    if (given == nullptr) return false;
    objects.assign(given->size(), T{});
    for (size_t i = 0; i < objects.size(); ++i) {
      from_json((*given)[i], path_of(key, i), objects[i]);
    }
    return true;
  }

  void require(bool is_named, const char* key) const {
    if (is_listing()) keys_->back().value.clear();
    if (!is_named) refuse(key, "is missing");
  }

  // For limits that the functions above do not know, such as those of an alphabet.
  [[noreturn]] void refuse(const char* key, const std::string& what) const {
    throw ArchiveError(path_of(key), what);
  }

  template <typename T>
  static json to_json(T& object) {
    json out = json::object();
    Archive archive(&out, nullptr, "");
    describe(archive, object);
    return out;
  }

  // Every key, in the order of the walk.
  template <typename T>
  static std::vector<Key> keys_of(T& object) {
    std::vector<Key> keys;
    Archive archive(nullptr, nullptr, "");
    archive.keys_ = &keys;
    describe(archive, object);
    return keys;
  }

  template <typename T>
  static void from_json(const json& in, const std::string& path, T& object) {
    Archive archive(nullptr, &in, path);
    archive.require_object();
    describe(archive, object);
    archive.refuse_unknown();
  }

 private:
  using Type = Key::Type;

  struct Accepted {
    Type type;
    std::string text;
    Privacy privacy = Privacy::open;
  };

  Archive(json* out, const json* in, std::string path)
      : out_(out), in_(in), path_(std::move(path)) {}

  static int64_t checked_number(const json& value, const std::string& path, int64_t low,
                                int64_t high);

  static std::string range_text(int64_t low, int64_t high);
  static std::string list_text(size_t max);

  template <typename T>
  bool write(const char* key, T&& value, const Accepted& accepted) {
    if (is_listing()) {
      keys_->push_back(
          {path_of(key), accepted.type, accepted.privacy, accepted.text, json(value).dump()});
    } else {
      (*out_)[key] = std::forward<T>(value);
    }
    return true;
  }
  template <typename T>
  bool list_keys(T& object, const std::string& path) {
    Archive archive(nullptr, nullptr, path);
    archive.keys_ = keys_;
    describe(archive, object);
    return true;
  }
  // With the values of a new entry.
  template <typename T>
  bool list_entry_keys(const std::string& path, size_t max) {
    keys_->push_back({path + "[]", Type::tables, Privacy::open,
                      "at most " + std::to_string(max) + " tables", ""});
    T entry{};
    return list_keys(entry, path + "[]");
  }
  template <typename T>
  bool write_list(const char* key, std::vector<T>& objects) {
    json list = json::array();
    for (T& object : objects) list.push_back(to_json(object));
    return write(key, std::move(list), {Type::tables, ""});
  }

  void check_size(const char* key, size_t size, Sizes sizes, const char* unit) const;
  const json* take(const char* key);
  const json* take_list(const char* key, size_t max);
  const std::string* take_string(const char* key);
  void require_object() const;
  void refuse_unknown() const;
  std::string path_of(const std::string& key) const;
  std::string path_of(const std::string& key, size_t index) const;

  json* out_;                         // null unless writing
  const json* in_;                    // null unless reading
  std::vector<Key>* keys_ = nullptr;  // null unless listing
  std::string path_;
  std::set<std::string, std::less<>> known_;
};

}  // namespace modem
