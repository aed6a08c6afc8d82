// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/cli/choices.h"

#include <map>

#include "tools/qorextctl/cli/command_app.h"

namespace qorextctl {

namespace {

const std::map<std::string, ColourWhen> kColours = {
    {"auto", ColourWhen::automatic},
    {"always", ColourWhen::always},
    {"never", ColourWhen::never},
};

const std::map<std::string, InputKind> kInputs = {
    {"request", InputKind::request},
    {"reply", InputKind::reply},
    {"unsolicited", InputKind::unsolicited},
    {"log", InputKind::log},
};

template <class T>
std::vector<std::string> names_of(const std::map<std::string, T>& choices) {
  std::vector<std::string> names;
  names.reserve(choices.size());
  for (const auto& [name, value] : choices) names.push_back(name);
  return names;
}

template <class T>
T chosen(const char* option, const std::map<std::string, T>& choices, const std::string& name) {
  auto choice = choices.find(name);
  if (choice != choices.end()) return choice->second;
  std::string names;
  for (const auto& [known, value] : choices) names += names.empty() ? known : ", " + known;
  refuse_value(option, "'" + name + "' is none of " + names);
}

}  // namespace

ColourWhen colour_named(const std::string& name) { return chosen("--color", kColours, name); }

InputKind input_named(const std::string& name) { return chosen("--as", kInputs, name); }

std::vector<std::string> choices_of(const std::string& option) {
  if (option == "--color") return names_of(kColours);
  if (option == "--as") return names_of(kInputs);
  if (option == "--modem") return {"qrtr", "unix:"};
  return {};
}

}  // namespace qorextctl
