// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/completion.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/qorextctl/frames/protocol.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

namespace {

using Words = std::vector<std::string>;
using Candidates = std::vector<Candidate>;
using completion::beginning_with;

Words all_but_first(const Words& words) { return {words.begin() + 1, words.end()}; }

// "a  b" is a, b; the text after the last blank is the word to complete.
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

Candidates nv_item_numbers() {
  Candidates numbers;
  for (const NvItem& item : kNvItems) {
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
  if (word.rfind(kRecord, 0) == 0)
    return completion::files_beginning_with("json=", word.substr(kRecord.size()));
  candidates.push_back({"json=", "a JSON record with any of these"});
  return candidates;
}

Candidates line_words(const Words& words) {
  if (words.size() == 1) return all_names();
  if (words[0] == "expect-failure") return line_words(all_but_first(words));
  if (words[0] == "modem") return words_of_modem(all_but_first(words));
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

Completion complete_line(const std::string& line) {
  Words words = split_at_blanks(line);
  const std::string& word = words.back();
  return {line.size() - word.size(), beginning_with(word, line_words(words))};
}

Candidates complete_request(const Words& words) {
  if (words.size() == 1) return beginning_with(words[0], request_names());
  const Request* request = find_request(words[0]);
  return request ? beginning_with(words.back(), arguments_of(*request, words)) : Candidates();
}

}  // namespace qorextctl
