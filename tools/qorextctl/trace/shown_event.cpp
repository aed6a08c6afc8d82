// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/shown_event.h"

#include <fmt/format.h>

#include "tools/qorextctl/log/log_line.h"

namespace qorextctl {

const Json* member(const Json& event, const char* key) {
  auto found = event.find(key);
  return found == event.end() ? nullptr : &*found;
}

std::string text_of(const Json& event, const char* key) {
  const Json* value = member(event, key);
  return value && value->is_string() ? value->get<std::string>() : "";
}

uint64_t number_of(const Json& event, const char* key) {
  const Json* value = member(event, key);
  return value && value->is_number_integer() ? value->get<uint64_t>() : 0;
}

int64_t time_of(const Json& event) { return static_cast<int64_t>(number_of(event, "time")); }

Json fields_of(const Json& event) {
  const Json* fields = member(event, "fields");
  return fields ? *fields : Json();
}

std::string name_of(const Json& event) {
  std::string name = text_of(event, "name");
  return name.empty() ? text_of(event, "id") : name;
}

std::string title_of(const Json& event) {
  return fmt::format("{} {} {}", text_of(event, "service"), text_of(event, "name"),
                     text_of(event, "direction"));
}

Json arguments_of(const Json& event) {
  Json arguments = Json::object();
  for (const char* key : {"id", "status_name", "fields", "problems"}) {
    if (event.contains(key) && !event[key].is_null()) arguments[key] = event[key];
  }
  return arguments;
}

std::optional<Speaker> speaker_of(const Json& event) {
  std::string line = text_of(event, "line");
  auto parsed = parse_daemon_line(line);
  if (!parsed) return std::nullopt;
  std::string_view source = parsed->source;
  size_t blank = source.find(' ');
  if (blank == std::string_view::npos) return std::nullopt;
  std::string_view thread = source.substr(source.find_last_of(' ') + 1);
  return Speaker{std::string(thread), source.substr(0, blank) == thread, std::string(parsed->text)};
}

}  // namespace qorextctl
