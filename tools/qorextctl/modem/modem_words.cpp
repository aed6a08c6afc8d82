// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/modem_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "modem/messages/fault.h"
#include "modem/messages/services.h"
#include "platform/linux/qmi_json/fields.h"
#include "platform/linux/qmi_json/foreign_json.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/values.h"

namespace qorextctl {

namespace {

using Words = std::span<const std::string>;

bool is_command_string(std::string_view key) { return key == "data" || key == "file"; }

bool is_state_string(std::string_view path) { return is_string(modem::state_keys(), path); }

bool is_fault_string(std::string_view key) {
  modem::Fault fault;
  return is_string(modem::Archive::keys_of(fault), key);
}

Result<Json> plain(Json command, Words words) {
  return with_pairs(std::move(command), words, is_command_string);
}

Result<Json> set(Json command, Words words) {
  if (words.empty()) return usage_error("modem set: nothing to set, give key=value");
  auto state = with_pairs(Json::object(), words, is_state_string);
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
  if (words.empty() || is_pair(words[0])) return plain(command, words);
  if (!parse_hex(words[0])) {
    return usage_error(fmt::format("modem nv: '{}' is not hex (pairs of digits)", words[0]));
  }
  command["data"] = words[0];
  return plain(command, words.subspan(1));
}

// A field that holds bytes, as hex digits.
bool is_byte_field(const std::string& indication, std::string_view name) {
  const qmi_idl::Message* message =
      qmi_json::find_by_name(modem::qorext_service(), qmi_idl::Direction::indication, indication);
  if (!message) return false;
  return std::any_of(message->elements.begin(), message->elements.end(),
                     [name](const qmi_idl::Element& element) {
                       return element.name == name && qmi_json::is_bytes(element.shape);
                     });
}

// The options describe the burst; all other words are fields.
Result<Json> indicate(Json command, Words words) {
  if (words.empty() || is_pair(words[0])) {
    return usage_error("modem indicate: give an indication's name, such as notify or pfp");
  }
  std::string name = modem_indication(words[0]);
  command["indication"] = name;
  auto fields = take_options(command, words.subspan(1));
  if (!fields) return fields.error();
  auto members = with_pairs(Json::object(), *fields,
                            [&name](std::string_view field) { return is_byte_field(name, field); });
  if (!members) return members;
  command["fields"] = *members;
  return command;
}

Result<Json> with_options(Json command, Words words) {
  auto pairs = take_options(command, words);
  if (!pairs) return pairs.error();
  return plain(command, *pairs);
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
  auto filled = with_pairs(command, words, is_fault_string);
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
    return usage_error("modem instances: expected a number, or nothing to print it");
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
    {"state", plain, "", "print the stored state"},
    {"set", set, "KEY=VALUE...", "change the state, such as lte.mcc=310"},
    {"nv", nv, "RDE [HEX] [record=N]", "read or write an NV item"},
    {"indicate", indicate, "NAME [FIELD=VALUE...] [--count N] [--interval-ms N]",
     "send indications"},
    {"kpi", kpi, "--file LOG | data=HEX [OPTIONS]", "upload a KPI log"},
    {"kpi_record", kpi_record, "WORD [HEX] [--package N]", "upload a KPI record, such as 02C0FFEE"},
    {"kpi_packet", plain, "[package=] [sequence=] [last=] [header=] [data=]", "one KPI packet"},
    {"uploads", plain, "", "progress of the uploads"},
    {"hob_save", with_options, "[--count N] [--interval-ms N] [--no-wait]",
     "ask the phone to save the hand-off block"},
    {"hob", plain, "", "the phone's reports on the block"},
    {"fault", fault, "KIND [service=] [message=] [times=] [delay_ms=]...", "inject a fault"},
    {"faults", plain, "", "list the active faults"},
    {"clear_faults", plain, "", "remove all faults"},
    {"service", service, "NAME up|down", "publish or withdraw qorext, nas or dms"},
    {"instances", instances, "[N]", "print or change the number of qorext instances"},
    {"requests", plain, "", "the requests received"},
    {"clear_requests", plain, "", "clear the list of requests"},
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
