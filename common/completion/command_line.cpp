// SPDX-License-Identifier: Apache-2.0
#include "common/completion/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <sstream>

namespace completion {

namespace {

using Words = std::vector<std::string>;
using Candidates = std::vector<Candidate>;

bool is_option(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

bool is_shown(const CLI::Option& option) {
  return !option.get_group().empty() && !option.get_lnames().empty();
}

const CLI::Option* find_option(const CLI::App& app, const CLI::App* verb, const std::string& name) {
  const CLI::Option* found = verb ? verb->get_option_no_throw(name) : nullptr;
  return found ? found : app.get_option_no_throw(name);
}

const CLI::App* find_verb(const CLI::App& app, const std::string& name) {
  for (const CLI::App* verb : app.get_subcommands({})) {
    if (verb->get_name() == name) return verb;
  }
  return nullptr;
}

void add_options(Candidates& candidates, const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    if (!is_shown(*option)) continue;
    std::string name = "--" + option->get_lnames()[0];
    bool known = std::any_of(candidates.begin(), candidates.end(),
                             [&](const Candidate& one) { return one.text == name; });
    if (!known) candidates.push_back({name, option->get_description()});
  }
}

}  // namespace

Candidates beginning_with(const std::string& word, Candidates candidates) {
  auto differs = [&](const Candidate& one) {
    return one.text != kFiles && one.text.rfind(word, 0) != 0;
  };
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(), differs), candidates.end());
  return candidates;
}

Candidates files_beginning_with(const std::string& prefix, const std::string& begun) {
  namespace fs = std::filesystem;
  std::string folder = begun.substr(0, begun.find_last_of('/') + 1);
  std::error_code error;
  Candidates names;
  for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
    std::string name = prefix + folder;
    name += entry.path().filename().string();
    if (entry.is_directory(error)) name += '/';
    names.push_back({name});
  }
  return names;
}

Place place_in(const CLI::App& app, const Words& words) {
  Place place;
  if (words.empty()) return place;
  for (size_t i = 0; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    bool takes_next = false;
    if (is_option(word)) {
      const CLI::Option* option = find_option(app, place.verb, word);
      takes_next = option && option->get_items_expected_min() > 0;
      if (takes_next && i + 2 == words.size()) place.option = option;
    } else if (!place.verb && find_verb(app, word)) {
      place.verb = find_verb(app, word);
    } else {
      place.positionals.push_back(word);
    }
    if (takes_next) ++i;
  }
  place.word = words.back();
  place.positionals.push_back(place.word);
  return place;
}

Candidates options_at(const CLI::App& app, const Place& place) {
  Candidates candidates;
  if (place.verb) add_options(candidates, *place.verb);
  add_options(candidates, app);
  return candidates;
}

Candidates verbs_of(const CLI::App& app) {
  Candidates candidates;
  for (const CLI::App* verb : app.get_subcommands({})) {
    candidates.push_back({verb->get_name(), verb->get_description()});
  }
  return candidates;
}

// The parser appends an option's checks to its type: "TEXT:FILE", "TEXT:DIR", "TEXT:{a,b,c}".
Candidates values_of(const CLI::Option& option) {
  std::string type = option.get_type_name();
  size_t open = type.find('{');
  size_t close = type.find('}');
  Candidates candidates;
  if (open == std::string::npos || close == std::string::npos) {
    bool is_path = type.find("FILE") != std::string::npos || type.find("DIR") != std::string::npos;
    if (is_path || (type == "TEXT" && !option.get_positional())) candidates.push_back({kFiles});
    return candidates;
  }
  std::istringstream names(type.substr(open + 1, close - open - 1));
  for (std::string name; std::getline(names, name, ',');) candidates.push_back({name});
  return candidates;
}

Candidates positionals_of(const CLI::App& verb) {
  for (const CLI::Option* option : verb.get_options()) {
    if (option->get_positional()) return values_of(*option);
  }
  return {};
}

Candidates complete(const CLI::App& app, const Words& words) {
  Place place = place_in(app, words);
  if (place.option) return beginning_with(place.word, values_of(*place.option));
  if (is_option(place.word) || verbs_of(app).empty()) {
    return beginning_with(place.word, options_at(app, place));
  }
  return place.verb ? Candidates() : beginning_with(place.word, verbs_of(app));
}

std::string to_text(const Candidates& candidates) {
  std::string text;
  for (const Candidate& candidate : candidates) {
    text += candidate.text + "\t" + candidate.remark + "\n";
  }
  return text;
}

}  // namespace completion
