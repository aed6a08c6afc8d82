// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/compare.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

constexpr const char* kHex = "hex";

// A value and its path, in the order of the object.
struct Leaf {
  std::string path;
  const Json* value;
};
using Leaves = std::vector<Leaf>;

bool is_list_of_objects(const Json& value) {
  return value.is_array() && !value.empty() && value[0].is_object();
}

void add_leaves(Leaves& leaves, const std::string& path, const Json& value) {
  if (is_list_of_objects(value)) {
    for (size_t i = 0; i < value.size(); ++i) {
      add_leaves(leaves, fmt::format("{}[{}]", path, i), value[i]);
    }
    return;
  }
  if (!value.is_object()) {
    leaves.push_back({path, &value});
    return;
  }
  for (const auto& [name, member] : value.items()) {
    add_leaves(leaves, path.empty() ? name : fmt::format("{}.{}", path, name), member);
  }
}

Leaves leaves_of(const Json& value) {
  Leaves leaves;
  add_leaves(leaves, "", value);
  return leaves;
}

const Json* find(const Leaves& leaves, const std::string& path) {
  auto found = std::find_if(leaves.begin(), leaves.end(),
                            [&](const Leaf& leaf) { return leaf.path == path; });
  return found == leaves.end() ? nullptr : found->value;
}

Json value_at(const Leaves& leaves, const std::string& path) {
  const Json* value = find(leaves, path);
  return value ? *value : Json();
}

struct Side {
  explicit Side(const Comparable& what)
      : values(leaves_of(what.value)), shown(leaves_of(what.shown)) {}
  Leaves values;
  Leaves shown;
};

bool same(const Side& expected, const Side& got, const std::string& path) {
  const Json* left = find(expected.values, path);
  const Json* right = find(got.values, path);
  return left && right && *left == *right;
}

std::vector<std::string> paths_of(const Side& expected, const Side& got) {
  std::vector<std::string> paths;
  for (const Leaf& leaf : expected.values) paths.push_back(leaf.path);
  for (const Leaf& leaf : got.values) {
    if (!find(expected.values, leaf.path)) paths.push_back(leaf.path);
  }
  return paths;
}

Difference difference_at(const Side& expected, const Side& got, const std::string& path) {
  return {path, value_at(expected.shown, path), value_at(got.shown, path)};
}

template <class Decoded>
Comparable both(const Decoded& decoded, bool show_personal, Json (*to_object)(const Decoded&)) {
  Comparable result{to_object(decoded), {}};
  Decoded shown = decoded;
  if (!show_personal) mask(shown);
  result.shown = to_object(shown);
  return result;
}

// Without the status name, which follows from the number.
Json frame_object(const DecodedFrame& frame) {
  Json object = to_json(frame);
  object.erase("status_name");
  return object;
}

// Without the transaction, which the client chooses.
Json message_object(const QmiMessage& message) {
  std::string hex = hex_of(message);
  size_t header = 2 * qmi_idl::kHeaderSize;
  return {{"fields", message.fields}, {kHex, hex.substr(std::min(header, hex.size()))}};
}

// Strings without quotes.
std::string plain(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string text_of(const Difference& difference) {
  const auto& [field, expected, got] = difference;
  if (!field.empty()) {
    return fmt::format("{}: expected {}, got {}", field, plain(expected), plain(got));
  }
  if (got.is_null()) return "is missing";
  return "is unexpected: " + plain(got.contains("fields") ? got["fields"] : got);
}

}  // namespace

Comparable comparable(const DecodedFrame& frame, bool show_personal) {
  return both(frame, show_personal, frame_object);
}

Comparable comparable(const QmiMessage& message, bool show_personal) {
  return both(message, show_personal, message_object);
}

std::vector<Difference> compare(const Comparable& expected, const Comparable& got) {
  Side left(expected);
  Side right(got);
  std::vector<Difference> differences;
  for (const std::string& path : paths_of(left, right)) {
    if (path != kHex && !same(left, right, path)) {
      differences.push_back(difference_at(left, right, path));
    }
  }
  if (differences.empty() && !same(left, right, kHex)) {
    differences.push_back(difference_at(left, right, kHex));
  }
  return differences;
}

void ReplayReport::add(size_t line, const std::string& what, const Difference& difference) {
  ++differences_;
  std::string where = line == 0 ? "" : fmt::format("line {}: ", line);
  printer_.result({{"type", "difference"},
                   {"line", line == 0 ? Json() : Json(line)},
                   {"what", what},
                   {"field", difference.field.empty() ? Json() : Json(difference.field)},
                   {"expected", difference.expected},
                   {"got", difference.got}},
                  fmt::format("{}{}: {}", where, what, text_of(difference)));
}

void ReplayReport::summary(const std::string& path) {
  printer_.result({{"type", "replay"},
                   {"recording", path},
                   {"compared", compared_},
                   {"differences", differences_}},
                  fmt::format("{}: {} frames and messages compared, {}", path, compared_,
                              differences_ == 1 ? "1 difference"
                                                : fmt::format("{} differences", differences_)));
}

}  // namespace qorextctl
