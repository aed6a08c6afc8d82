// SPDX-License-Identifier: Apache-2.0
#include "modem/scenario.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <fstream>
#include <iterator>

#include "modem/simulator/simulator.h"
#include "modem/state/state.h"
#include "modem/state/state_keys.h"

namespace modem {
namespace {

using nlohmann::json;

constexpr size_t kMaxFaults = 1024;
// The same as for a line on the control socket.
constexpr size_t kMaxSize = size_t{4} << 20;

json to_json(const toml::node& node);

json table_to_json(const toml::table& table) {
  json object = json::object();
  for (const auto& [key, value] : table) object[std::string(key.str())] = to_json(value);
  return object;
}

json array_to_json(const toml::array& array) {
  json list = json::array();
  for (const auto& value : array) list.push_back(to_json(value));
  return list;
}

// Types that no key accepts, such as dates, become null, which the key refuses.
json to_json(const toml::node& node) {
  if (const auto* table = node.as_table()) return table_to_json(*table);
  if (const auto* array = node.as_array()) return array_to_json(*array);
  if (const auto* text = node.as_string()) return text->get();
  if (const auto* number = node.as_integer()) return number->get();
  if (const auto* number = node.as_floating_point()) return number->get();
  if (const auto* flag = node.as_boolean()) return flag->get();
  return nullptr;
}

// The line of the value, or of the table where it is missing.
toml::source_index line_of(const toml::table& table, std::string path) {
  constexpr toml::source_index kFirstLine = 1;
  while (!table.at_path(path)) {
    size_t cut = path.find_last_of(".[");
    if (cut == std::string::npos) return kFirstLine;
    path.resize(cut);
  }
  return table.at_path(path).node()->source().begin.line;
}

[[noreturn]] void fail(const std::string& path, size_t line, std::string_view what) {
  throw ScenarioError(fmt::format("{}:{}: {}", path, line, what));
}

// Reads at most one byte more than allowed.
std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(kMaxSize + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.gcount() == 0 && !file.eof()) {
    throw ScenarioError(fmt::format("{}: cannot be read", path));
  }
  text.resize(static_cast<size_t>(file.gcount()));
  return text;
}

}  // namespace

void describe(Archive& archive, Scenario& scenario) {
  archive.number("instances", scenario.instances, 1, kMaxInstances);
  describe(archive, scenario.state);
  archive.list("faults", scenario.faults, kMaxFaults);
}

Scenario load_scenario(const std::string& path) { return read_scenario(content_of(path), path); }

Scenario read_scenario(std::string_view text, const std::string& path) {
  if (text.size() > kMaxSize) {
    throw ScenarioError(fmt::format("{}: is longer than {} bytes", path, kMaxSize));
  }
  if (size_t line = find_excess_levels(text)) {
    fail(path, line, fmt::format("is nested deeper than {} levels", kMaxTomlLevels));
  }
  toml::table table;
  try {
    table = toml::parse(text);
  } catch (const toml::parse_error& error) {
    fail(path, error.source().begin.line, error.description());
  }

  Scenario scenario{factory_state(), {}};
  try {
    Archive::from_json(table_to_json(table), "", scenario);
  } catch (const ArchiveError& error) {
    fail(path, line_of(table, error.path), error.describe());
  }
  return scenario;
}

}  // namespace modem
