// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/item_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

std::string value_text(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.dump();
  std::vector<std::string> texts;
  for (const Json& element : value) texts.push_back(value_text(element));
  return texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, " "));
}

std::string record_text(const Items& record) {
  std::vector<std::string> texts;
  for (const Item& item : record) {
    texts.push_back(fmt::format("{} {}", item.name, value_text(item.value)));
  }
  return fmt::format("{}", fmt::join(texts, ", "));
}

using Line = std::pair<std::string, std::string>;

std::vector<Line> lines_of(const Items& items) {
  std::vector<Line> lines;
  for (const Item& item : items) {
    if (!item.is_group) lines.emplace_back(item.name, value_text(item.value));
    if (item.is_group && item.records.empty()) lines.emplace_back(item.name, "none");
    for (size_t i = 0; i < item.records.size(); ++i) {
      lines.emplace_back(fmt::format("{} {}", item.name, i + 1), record_text(item.records[i]));
    }
  }
  return lines;
}

const char* name_of(Type type) {
  switch (type) {
    case Type::u8:
      return "u8";
    case Type::i8:
      return "i8";
    case Type::u16:
      return "u16";
    case Type::i16:
      return "i16";
    case Type::u32:
      return "u32";
    case Type::i32:
      return "i32";
    case Type::u32_be:
      return "u32, big-endian";
    case Type::hex:
      return "bytes";
    case Type::code:
      return "characters";
    case Type::digits:
      return "ASCII digits";
    case Type::text:
      return "text";
    case Type::string:
      return "text with a NUL";
    case Type::numbers:
      return "u32 numbers";
    case Type::pairs:
      return "pairs of u32";
    default:
      return "digits, a byte each";
  }
}

std::string sized(const Field& field) {
  if (field.count != 1) return fmt::format("{} {}", field.count, name_of(field.type));
  if (field.size == 0) return name_of(field.type);
  if (field.type == Type::hex || field.type == Type::code) {
    return fmt::format("{} {}", field.size, name_of(field.type));
  }
  return fmt::format("{}, {} bytes", name_of(field.type), field.size);
}

std::string in_use(const char* counted_by) {
  return counted_by ? fmt::format(", {} in use", counted_by) : "";
}

}  // namespace

Json to_json(const Items& items) {
  Json object = Json::object();
  for (const Item& item : items) {
    Json& member = object[json_key(item.name)];
    member = item.value;
    if (!item.is_group) continue;
    member = Json::array();
    for (const Items& record : item.records) member.push_back(to_json(record));
  }
  return object;
}

Json to_json(const DecodedFrame& frame) {
  return {{"name", frame.name.empty() ? Json() : Json(frame.name)},
          {"id", frame.id},
          {"status", frame.status ? Json(*frame.status) : Json()},
          {"status_name", frame.status ? Json(frame.status_name) : Json()},
          {"length", frame.length},
          {"fields", to_json(frame.fields)},
          {"problems", frame.problems},
          {"hex", hex_of(frame)}};
}

std::string to_text(const Items& items) {
  std::vector<Line> lines = lines_of(items);
  size_t width = 0;
  for (const Line& line : lines) width = std::max(width, line.first.size());
  std::string text;
  for (const auto& [name, value] : lines) {
    text += fmt::format("  {:<{}}  {}", name + ":", width + 1, value);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

std::string type_text(const Field& field) { return sized(field) + in_use(field.counted_by); }

std::string type_text(const Group& group) {
  return fmt::format("{} records of {} bytes", group.count, group.stride) +
         in_use(group.counted_by);
}

}  // namespace qorextctl
