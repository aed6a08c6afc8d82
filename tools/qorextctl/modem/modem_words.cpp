// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "platform/linux/qmi_json/foreign_json.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/modem/modem_options.h"

namespace qorextctl {

namespace {

using Words = std::span<const std::string>;

// What is text or bytes even where it looks like a number.
constexpr std::string_view kTextKeys[] = {"data",         "table",
                                          "report",       "text",
                                          "name",         "service",
                                          "message",      "kind",
                                          "spc",          "file",
                                          "mdn",          "min",
                                          "imsi_mcc",     "imsi_11_12",
                                          "imsi_t",       "short_name",
                                          "long_name",    "ipv4",
                                          "ipv6",         "fsg_version",
                                          "flex_version", "network_description"};

bool is_text_key(std::string_view key) {
  return std::find(std::begin(kTextKeys), std::end(kTextKeys), key) != std::end(kTextKeys);
}

Result<Json> typed_value(const std::string& key, const std::string& text) {
  bool structured = !text.empty() && (text.front() == '[' || text.front() == '{');
  if (is_text_key(key) && !structured) return Json(text);
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

std::optional<Error> add_pair(Json& object, const std::string& word) {
  size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0) return wrong_pair(word, "is not key=value");
  std::string path = json_key(word.substr(0, equals));
  auto dots = static_cast<size_t>(std::count(path.begin(), path.end(), '.'));
  if (dots >= qmi_json::kMaxLevels) {
    return wrong_pair(word, fmt::format("has more than {} levels", qmi_json::kMaxLevels));
  }
  auto value = typed_value(path.substr(path.rfind('.') + 1), word.substr(equals + 1));
  if (!value) return value.error();
  Json* member = member_at(object, path);
  if (!member) return wrong_pair(word, "names a member of what has a value");
  *member = std::move(*value);
  return std::nullopt;
}

// Adds key=value words to the object.
Result<Json> with_pairs(Json object, Words words) {
  for (const std::string& word : words) {
    if (auto error = add_pair(object, word)) return *error;
  }
  return object;
}

Result<Json> plain(Json command, Words words) { return with_pairs(std::move(command), words); }

Result<Json> set(Json command, Words words) {
  if (words.empty()) return usage_error("modem set: nothing to set, give key=value");
  auto state = with_pairs(Json::object(), words);
  if (!state) return state;
  command["state"] = *state;
  return command;
}

bool is_pair(const std::string& word) { return word.find('=') != std::string::npos; }

Result<Json> nv(Json command, Words words) {
  auto rde_id = words.empty() ? std::nullopt : parse_number(words[0]);
  if (!rde_id) return usage_error("modem nv: give an element number, and hex bytes to write it");
  command["rde_id"] = *rde_id;
  words = words.subspan(1);
  if (words.empty() || is_pair(words[0])) return with_pairs(command, words);
  if (!parse_hex(words[0])) {
    return usage_error(fmt::format("modem nv: '{}' is not hex (pairs of digits)", words[0]));
  }
  command["data"] = words[0];
  return with_pairs(command, words.subspan(1));
}

// Options are the burst's; everything else is a field.
Result<Json> indicate(Json command, Words words) {
  if (words.empty() || is_pair(words[0])) {
    return usage_error("modem indicate: give an indication's name, such as notify or pfp");
  }
  command["indication"] = modem_indication(words[0]);
  auto fields = take_options(command, words.subspan(1));
  if (!fields) return fields.error();
  auto members = with_pairs(Json::object(), *fields);
  if (!members) return members;
  command["fields"] = *members;
  return command;
}

Result<Json> with_options(Json command, Words words) {
  auto pairs = take_options(command, words);
  if (!pairs) return pairs.error();
  return with_pairs(command, *pairs);
}

Result<Json> kpi(Json command, Words words) {
  auto filled = with_options(std::move(command), words);
  bool has_log = filled && (filled->contains("file") || filled->contains("data"));
  if (filled && !has_log) return usage_error("modem kpi: give --file LOG or data=HEX");
  return filled;
}

Result<Json> kpi_record(Json command, Words words) {
  auto header = words.empty() ? std::nullopt : parse_word(words[0]);
  if (!header) return usage_error("modem kpi-record: give a header word, such as 02C0FFEE");
  command["command"] = "kpi_packet";
  command["header"] = *header;
  words = words.subspan(1);
  if (!words.empty() && parse_hex(words[0])) {
    command["data"] = words[0];
    words = words.subspan(1);
  }
  return with_options(std::move(command), words);
}

Result<Json> fault(Json command, Words words) {
  if (!words.empty() && !is_pair(words[0])) {
    command["kind"] = words[0];
    words = words.subspan(1);
  }
  auto filled = with_pairs(command, words);
  if (filled && !filled->contains("kind")) {
    return usage_error("modem fault: give a kind, such as silent, delay or error");
  }
  return filled;
}

Result<Json> service(Json command, Words words) {
  bool whole = words.size() == 2 && (words[1] == "up" || words[1] == "down");
  if (!whole) return usage_error("modem service: give a service (qorext, nas, dms) and up or down");
  command["name"] = words[0];
  command["up"] = words[1] == "up";
  return command;
}

Result<Json> instances(Json command, Words words) {
  auto count = words.empty() ? std::nullopt : parse_number(words[0]);
  if (words.size() > 1 || (!words.empty() && !count)) {
    return usage_error("modem instances: give a number, or nothing to be shown it");
  }
  if (count) command["count"] = *count;
  return command;
}

struct CommandRow {
  const char* name;
  Result<Json> (*build)(Json command, Words words);
  const char* arguments;
  const char* help;
};

constexpr CommandRow kCommands[] = {
    {"state", plain, "", "everything the modem has stored"},
    {"set", set, "KEY=VALUE...", "change the state, such as lte.mcc=310"},
    {"nv", nv, "RDE [HEX] [record=N]", "read or write an NV item"},
    {"indicate", indicate, "NAME [FIELD=VALUE...] [--count N] [--interval-ms N]",
     "send indications"},
    {"kpi", kpi, "--file LOG | data=HEX [OPTIONS]", "upload a KPI log"},
    {"kpi_record", kpi_record, "WORD [HEX] [--package N]", "upload a KPI record, such as 02C0FFEE"},
    {"kpi_packet", plain, "[package=] [sequence=] [last=] [header=] [data=]", "one KPI packet"},
    {"uploads", plain, "", "how far the uploads are"},
    {"hob_save", with_options, "[--count N] [--interval-ms N] [--no-wait]",
     "ask the phone to save the hand-off block"},
    {"hob", plain, "", "what the phone has told about the block"},
    {"fault", fault, "KIND [service=] [message=] [times=] [delay_ms=]...", "misbehave"},
    {"faults", plain, "", "faults in force"},
    {"clear_faults", plain, "", "end all faults"},
    {"service", service, "NAME up|down", "publish or withdraw qorext, nas or dms"},
    {"instances", instances, "[N]", "how many instances qorext has; with N change it"},
    {"requests", plain, "", "what the modem was asked"},
    {"clear_requests", plain, "", "forget what the modem was asked"},
    {"version", plain, "", "the modem's version"},
    {"quit", plain, "", "end the modem"},
};

const CommandRow* find_command(const std::string& name) {
  const auto* row =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&name](const CommandRow& command) { return name == command.name; });
  return row == std::end(kCommands) ? nullptr : row;
}

}  // namespace

std::string modem_indication(const std::string& word) {
  if (word == "carrier") return "carrier_event";
  if (word == "utility") return "utils";
  return json_key(word);
}

Result<Json> modem_command(std::span<const std::string> words) {
  if (words.empty()) return usage_error("modem: no command given (see: qorextctl modem --help)");
  if (words[0].front() == '{') {
    auto [object, excess] = qmi_json::parse_foreign<Json>(words[0]);
    if (excess) return usage_error(fmt::format("modem: the word in braces {}", excess));
    if (object.is_object() && words.size() == 1) return std::move(object);
    return usage_error("modem: the word in braces is not one JSON object");
  }
  std::string name = json_key(words[0]);
  const CommandRow* row = find_command(name);
  if (row) return row->build({{"command", name}}, words.subspan(1));
  return usage_error(
      fmt::format("modem: unknown command '{}' (see: qorextctl modem --help)", words[0]));
}

std::vector<ModemCommand> modem_commands() {
  std::vector<ModemCommand> all;
  for (const CommandRow& row : kCommands) all.push_back({row.name, row.arguments, row.help});
  return all;
}

std::string modem_command_help() {
  std::string text;
  for (const ModemCommand& command : modem_commands()) {
    std::string usage = fmt::format("{} {}", command.name, command.arguments);
    text += fmt::format("  {:<60} {}\n", usage, command.help);
  }
  return text;
}

}  // namespace qorextctl
