// SPDX-License-Identifier: Apache-2.0
// One walk over named values that either writes them as JSON or reads them from JSON, so that every
// value's name and limits are stated once. Reading takes a partial object: what is not named keeps
// its value; what is named wrongly throws ArchiveError. The same walk tells which names there are.
//
// A structure T takes part by a function describe(Archive&, T&) in its own namespace.
#pragma once

#include <algorithm>
#include <concepts>
#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

// The message says what is wrong; `path` says where, as "lte.mcc" or "operators[1].mnc".
struct ArchiveError : std::invalid_argument {
  ArchiveError(std::string where, const std::string& what)
      : std::invalid_argument(what), path(std::move(where)) {}

  std::string describe() const { return path.empty() ? what() : path + ": " + what(); }

  std::string path;
};

struct Sizes {
  size_t least;
  size_t most;
};
constexpr Sizes exactly(size_t size) { return {size, size}; }
constexpr Sizes up_to(size_t size) { return {0, size}; }

// Of whatever goes by a name: a message, a fault, a value.
constexpr size_t kMaxName = 64;

// A value's name, as "lte.mcc" or "operators[].mnc", what it takes, and what it is now; without the
// latter where it has to be given.
struct KeyRow {
  std::string path;
  std::string accepts;
  std::string value;
};

// What an integer of at most 32 bits holds.
template <std::integral T>
constexpr int64_t kLowest = std::is_signed_v<T> ? -(int64_t{1} << (8 * sizeof(T) - 1)) : 0;
template <std::integral T>
constexpr int64_t kHighest = (int64_t{1} << (8 * sizeof(T) - (std::is_signed_v<T> ? 1 : 0))) - 1;

class Archive {
 public:
  using json = nlohmann::json;

  bool reading() const { return in_ != nullptr; }
  bool telling_names() const { return rows_ != nullptr; }

  // Each returns whether the value was named (always true when writing).
  template <std::integral T>
  bool number(const char* key, T& value, int64_t low = kLowest<T>, int64_t high = kHighest<T>) {
    if (!reading()) return write(key, value, "number, " + range_text(low, high));
    const json* given = take(key);
    if (given != nullptr) value = static_cast<T>(checked_number(*given, path_of(key), low, high));
    return given != nullptr;
  }

  bool text(const char* key, std::string& value, Sizes sizes);
  bool digits(const char* key, std::string& value, Sizes sizes);
  bool hex(const char* key, qmi_json::Bytes& value, Sizes sizes);

  bool flag(const char* key, bool& value);
  // Whatever stands there.
  bool raw(const char* key, json& value);

  // As many numbers as there are up to `most`.
  bool numbers(const char* key, std::vector<uint32_t>& values, size_t most);

  // A fixed number of numbers; those behind the given ones become zero.
  template <std::integral T, size_t N>
  bool numbers(const char* key, T (&values)[N]) {
    if (!reading()) {
      return write(key, std::vector<T>(values, values + N),
                   list_text(N) + range_text(kLowest<T>, kHighest<T>));
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
    if (telling_names()) return tell(object, path_of(key));
    if (!reading()) return write(key, to_json(object), "");
    const json* given = take(key);
    if (given != nullptr) from_json(*given, path_of(key), object);
    return given != nullptr;
  }

  // A list of structures replaces the one that is there.
  template <typename T>
  bool list(const char* key, std::vector<T>& objects, size_t most) {
    if (telling_names()) return tell_entry<T>(path_of(key), most);
    if (!reading()) return write_list(key, objects);
    const json* given = take_list(key, most);
    if (given == nullptr) return false;
    objects.assign(given->size(), T{});
    for (size_t i = 0; i < objects.size(); ++i) {
      from_json((*given)[i], path_of(key, i), objects[i]);
    }
    return true;
  }

  void require(bool is_named, const char* key) const {
    if (telling_names()) rows_->back().value.clear();
    if (!is_named) refuse(key, "is missing");
  }

  // For values of another form, e.g. an address: the text to be parsed, and the error if it cannot.
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

  // Every name, in the order of the walk.
  template <typename T>
  static std::vector<KeyRow> names_of(T& object) {
    std::vector<KeyRow> rows;
    Archive archive(nullptr, nullptr, "");
    archive.rows_ = &rows;
    describe(archive, object);
    return rows;
  }

  template <typename T>
  static void from_json(const json& in, const std::string& path, T& object) {
    Archive archive(nullptr, &in, path);
    archive.require_object();
    describe(archive, object);
    archive.refuse_unknown();
  }

 private:
  Archive(json* out, const json* in, std::string path)
      : out_(out), in_(in), path_(std::move(path)) {}

  static int64_t checked_number(const json& value, const std::string& path, int64_t low,
                                int64_t high);

  static std::string range_text(int64_t low, int64_t high);
  static std::string list_text(size_t most);

  template <typename T>
  bool write(const char* key, T&& value, const std::string& accepts) {
    if (telling_names()) {
      rows_->push_back({path_of(key), accepts, json(value).dump()});
    } else {
      (*out_)[key] = std::forward<T>(value);
    }
    return true;
  }
  template <typename T>
  bool tell(T& object, const std::string& path) {
    Archive archive(nullptr, nullptr, path);
    archive.rows_ = rows_;
    describe(archive, object);
    return true;
  }
  // What a new entry of a list holds.
  template <typename T>
  bool tell_entry(const std::string& path, size_t most) {
    rows_->push_back({path + "[]", "at most " + std::to_string(most) + " tables", ""});
    T entry{};
    return tell(entry, path + "[]");
  }
  template <typename T>
  bool write_list(const char* key, std::vector<T>& objects) {
    json list = json::array();
    for (T& object : objects) list.push_back(to_json(object));
    return write(key, std::move(list), "");
  }

  const json* take(const char* key);
  const json* take_list(const char* key, size_t most);
  const std::string* take_text(const char* key);
  void require_object() const;
  void refuse_unknown() const;
  std::string path_of(const std::string& key) const;
  std::string path_of(const std::string& key, size_t index) const;

  json* out_;                            // null when reading
  const json* in_;                       // null when writing
  std::vector<KeyRow>* rows_ = nullptr;  // null when not telling names
  std::string path_;
  std::set<std::string, std::less<>> known_;
};

}  // namespace modem
