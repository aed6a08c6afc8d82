// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/compare.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

constexpr const char* kHex = "hex";

using Leaves = nlohmann::ordered_map<std::string, Json>;  // values by path, in order

void add_leaves(Leaves& leaves, const std::string& path, const Json& value) {
  bool is_list = value.is_array() && !value.empty() && value[0].is_object();
  if (!is_list && !value.is_object()) {
    leaves.insert({path, value});
    return;
  }
  for (const auto& [name, member] : value.items()) {
    std::string step = is_list ? fmt::format("[{}]", name) : path.empty() ? name : "." + name;
    add_leaves(leaves, path + step, member);
  }
}

Leaves leaves_of(const Json& value) {
  Leaves leaves;
  add_leaves(leaves, "", value);
  return leaves;
}

const Json* find(const Leaves& leaves, const std::string& path) {
  auto found = leaves.find(path);
  return found == leaves.end() ? nullptr : &found->second;
}

Json value_at(const Leaves& leaves, const std::string& path) {
  const Json* value = find(leaves, path);
  return value ? *value : Json();
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
  Leaves left = leaves_of(expected.value);
  Leaves right = leaves_of(got.value);
  Leaves left_shown = leaves_of(expected.shown);
  Leaves right_shown = leaves_of(got.shown);
  Leaves all = left;
  for (const auto& [path, value] : right) all.insert({path, value});
  std::vector<Difference> differences;
  for (const auto& [path, value] : all) {
    const Json* one = find(left, path);
    const Json* other = find(right, path);
    if (one && other && *one == *other) continue;
    differences.push_back({path, value_at(left_shown, path), value_at(right_shown, path)});
  }
  // Different fields imply different bytes.
  if (differences.size() > 1) {
    std::erase_if(differences, [](const Difference& found) { return found.field == kHex; });
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
