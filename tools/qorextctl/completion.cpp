#include "completion.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "modem_control.h"
#include "modem_options.h"
#include "nv_items.h"
#include "request.h"
#include "session.h"

namespace qorextctl {

namespace {

using Words = std::vector<std::string>;
using Candidates = std::vector<Candidate>;
using completion::beginning_with;

Words behind(const Words& words) { return {words.begin() + 1, words.end()}; }

// "a  b" is a, b; what stands behind the last blank is the word to be completed.
Words split_at_blanks(const std::string& line) {
  Words words(1);
  for (char character : line) {
    bool blank = character == ' ' || character == '\t';
    if (!blank) words.back() += character;
    if (blank && !words.back().empty()) words.emplace_back();
  }
  return words;
}

Candidates request_names() {
  Candidates names;
  for (const Request& request : catalogue()) names.push_back({request.name, request.description});
  return names;
}

Candidates line_names() {
  Candidates names;
  for (const LineCommand& command : Session::commands()) {
    names.push_back({command.name, command.help});
  }
  return names;
}

Candidates all_names() {
  Candidates names = line_names();
  for (Candidate& name : request_names()) names.push_back(std::move(name));
  return names;
}

// A folder's name ends in a slash.
Candidates files(const std::string& front, const std::string& begun) {
  namespace fs = std::filesystem;
  std::string folder = begun.substr(0, begun.find_last_of('/') + 1);
  std::error_code error;
  Candidates names;
  for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
    std::string name = front + folder;
    name += entry.path().filename().string();
    if (entry.is_directory(error)) name += '/';
    names.push_back({name});
  }
  return names;
}

Candidates nv_item_numbers() {
  Candidates numbers;
  for (const NvItem& item : known_nv_items()) {
    numbers.push_back({fmt::format("rde-id={}", item.id), item.name});
  }
  return numbers;
}

Candidates values_of(const Argument& argument) {
  std::string name = argument.field.name;
  if (name == "rde-id") return nv_item_numbers();
  Candidates values;
  for (const std::string& choice : split_at_blanks(argument.choices)) {
    if (!choice.empty()) values.push_back({fmt::format("{}={}", name, choice)});
  }
  return values;
}

bool is_given(const Words& words, const std::string& key) {
  return std::any_of(words.begin(), words.end() - 1,
                     [&](const std::string& word) { return word.rfind(key, 0) == 0; });
}

// Names of arguments that are not given yet, or values of the one whose name is there.
Candidates arguments_of(const Request& request, const Words& words) {
  const std::string& word = words.back();
  size_t equals = word.find('=');
  Candidates candidates;
  for (const Argument& argument : request.payload.arguments) {
    std::string key = argument.field.name + std::string("=");
    if (equals != std::string::npos && word.rfind(key, 0) == 0) return values_of(argument);
    if (!is_given(words, key)) candidates.push_back({key, argument.help});
  }
  if (!request.payload.takes_record) return candidates;
  constexpr std::string_view kRecord = "json=";
  if (word.rfind(kRecord, 0) == 0) return files("json=", word.substr(kRecord.size()));
  candidates.push_back({"json=", "a JSON record with any of these"});
  return candidates;
}

// What the usage of a modem's command names: "KIND [service=] [--count N] up|down".
Candidates modem_arguments(const std::string& usage) {
  Candidates candidates;
  for (std::string word : split_at_blanks(usage)) {
    word.erase(std::remove_if(word.begin(), word.end(),
                              [](char one) { return one == '[' || one == ']' || one == '.'; }),
               word.end());
    size_t equals = word.find('=');
    if (word.rfind("--", 0) == 0) candidates.push_back({word});
    if (equals != std::string::npos) candidates.push_back({word.substr(0, equals + 1)});
    size_t bar = word.find('|');
    if (bar == std::string::npos || bar == 0 || equals != std::string::npos) continue;
    candidates.push_back({word.substr(0, bar)});
    candidates.push_back({word.substr(bar + 1)});
  }
  return candidates;
}

Candidates modem_option_names() {
  Candidates names;
  for (const ModemOption& option : modem_options()) names.push_back({option.name, option.help});
  return names;
}

Candidates state_pairs(const StateKeys& state_keys) {
  Candidates pairs;
  if (!state_keys) return pairs;
  for (const std::string& key : state_keys()) pairs.push_back({key + "="});
  return pairs;
}

Candidates modem_words(const Words& words, const StateKeys& state_keys) {
  Candidates names;
  for (const ModemCommand& command : modem_commands()) {
    if (words.size() > 1 && words[0] != command.name) continue;
    if (words.size() == 1) {
      names.push_back({command.name, command.help});
    } else if (words[0] == "set") {
      return state_pairs(state_keys);
    } else if (words[words.size() - 2] == "--file") {
      return files("", words.back());
    } else {
      names = modem_arguments(command.arguments);
      bool wants_option = words.back().rfind("--", 0) == 0;
      return wants_option && names.empty() ? modem_option_names() : names;
    }
  }
  return names;
}

Candidates line_words(const Words& words, const StateKeys& state_keys) {
  if (words.size() == 1) return all_names();
  if (words[0] == "expect-failure") return line_words(behind(words), state_keys);
  if (words[0] == "modem") return modem_words(behind(words), state_keys);
  if (words[0] == "help" && words.size() == 2) return all_names();
  if (words[0] == "phone" && words.size() == 2) return {{"show"}};
  const Request* request = find_request(words[0]);
  return request ? arguments_of(*request, words) : Candidates();
}

}  // namespace

std::string Completion::common() const {
  std::string shared = candidates.empty() ? "" : candidates[0].text;
  for (const Candidate& candidate : candidates) {
    auto differs =
        std::mismatch(shared.begin(), shared.end(), candidate.text.begin(), candidate.text.end());
    shared.erase(differs.first, shared.end());
  }
  return shared;
}

Completion complete_line(const std::string& line, const StateKeys& state_keys) {
  Words words = split_at_blanks(line);
  const std::string& word = words.back();
  return {line.size() - word.size(), beginning_with(word, line_words(words, state_keys))};
}

Candidates complete_request(const Words& words) {
  if (words.size() == 1) return beginning_with(words[0], request_names());
  const Request* request = find_request(words[0]);
  return request ? beginning_with(words.back(), arguments_of(*request, words)) : Candidates();
}

Candidates complete_modem(const Words& words, const StateKeys& state_keys) {
  return beginning_with(words.back(), modem_words(words, state_keys));
}

}  // namespace qorextctl
