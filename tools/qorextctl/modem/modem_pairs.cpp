// SPDX-License-Identifier: Apache-2.0
// The key=value words of a modem command.
#include <fmt/format.h>

#include <algorithm>

#include "platform/linux/qmi_json/foreign_json.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/modem_words.h"

namespace qorextctl {

namespace {

constexpr std::string_view kListMark = "[]";

// A string may look like a number. A list or an object is always given as JSON.
Result<Json> typed_value(const std::string& key, const std::string& text, bool is_a_string) {
  bool is_structured = !text.empty() && (text.front() == '[' || text.front() == '{');
  if (is_a_string && !is_structured) return Json(text);
  if (auto number = parse_number(text)) return Json(*number);
  auto [parsed, excess] = qmi_json::parse_foreign<Json>(text);
  if (excess) return usage_error(fmt::format("modem: the value of '{}' {}", key, excess));
  return parsed.is_discarded() ? Json(text) : std::move(parsed);
}

// "lte.mcc" names the member mcc of the table lte. Null when lte is a value already.
Json* member_at(Json& object, std::string_view path) {
  Json* place = &object;
  for (;;) {
    if (!place->is_object() && !place->is_null()) return nullptr;
    size_t dot = path.find('.');
    place = &(*place)[std::string(path.substr(0, dot))];
    if (dot == std::string_view::npos) return place;
    path.remove_prefix(dot + 1);
  }
}

Error wrong_pair(const std::string& word, std::string_view what) {
  return usage_error(fmt::format("modem: '{}' {}", beginning_of(word), what));
}

std::string_view last_name(std::string_view path) { return path.substr(path.rfind('.') + 1); }

std::optional<Error> add_pair(Json& object, const std::string& word, const IsString& is_a_string) {
  size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0) return wrong_pair(word, "is not key=value");
  std::string path = json_key(word.substr(0, equals));
  auto dots = static_cast<size_t>(std::count(path.begin(), path.end(), '.'));
  if (dots >= qmi_json::kMaxLevels) {
    return wrong_pair(word, fmt::format("has more than {} levels", qmi_json::kMaxLevels));
  }
  auto value =
      typed_value(std::string(last_name(path)), word.substr(equals + 1), is_a_string(path));
  if (!value) return value.error();
  Json* member = member_at(object, path);
  if (!member) return wrong_pair(word, "names a member of a key that has a value");
  *member = std::move(*value);
  return std::nullopt;
}

// "nv" holds "nv[].data", "nam" holds "nam.mdn".
bool is_or_holds(std::string_view path, std::string_view inner) {
  if (!inner.starts_with(path)) return false;
  std::string_view rest = inner.substr(path.size());
  return rest.empty() || rest.starts_with('.') || rest.starts_with(kListMark);
}

}  // namespace

Result<Json> with_pairs(Json object, std::span<const std::string> words,
                        const IsString& is_a_string) {
  for (const std::string& word : words) {
    if (auto error = add_pair(object, word, is_a_string)) return *error;
  }
  return object;
}

bool is_string(const std::vector<modem::Key>& keys, std::string_view path) {
  return std::any_of(keys.begin(), keys.end(), [path](const modem::Key& key) {
    return key.path == path && key.type == modem::Key::Type::string;
  });
}

bool is_personal_state(const std::string& name) {
  std::string path = json_key(name);
  const auto& keys = modem::state_keys();
  return std::any_of(keys.begin(), keys.end(), [&path](const modem::Key& key) {
    if (key.privacy != modem::Privacy::personal) return false;
    return is_or_holds(path, key.path) || last_name(key.path) == last_name(path);
  });
}

std::vector<std::string> modem_state_keys() {
  std::vector<std::string> names;
  for (const modem::Key& key : modem::state_keys()) {
    std::string_view path = key.path;
    if (path.ends_with(kListMark)) path.remove_suffix(kListMark.size());
    if (path.find(kListMark) == std::string_view::npos) names.emplace_back(path);
  }
  return names;
}

}  // namespace qorextctl
