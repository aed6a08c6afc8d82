// SPDX-License-Identifier: Apache-2.0
// Completion of command lines, from the description that the parser uses.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace completion {

// With this first argument a program prints the candidates for the last of the other arguments: one
// per line, a tab between the word and a remark. kFiles represents the names of files.
constexpr std::string_view kVerb = "complete";
constexpr const char* kFiles = ":files";

struct Candidate {
  std::string text;
  std::string remark = {};  // may be empty
};

// Those that begin with the word, and kFiles.
std::vector<Candidate> beginning_with(const std::string& word, std::vector<Candidate> candidates);

// The files and folders of the folder that the path `begun` names, each with `prefix` before it. A
// folder's name ends in a slash.
std::vector<Candidate> files_beginning_with(const std::string& prefix, const std::string& begun);

// The words of a command line as the parser takes them; the last one is to be completed.
struct Place {
  const CLI::App* verb = nullptr;             // null: none is given, or the program has none
  const CLI::Option* option = nullptr;        // whose value is to be completed
  std::vector<std::string> positionals = {};  // after the verb; the last one is to be completed
  std::string word = {};
};
Place place_in(const CLI::App& app, const std::vector<std::string>& words);

// The options of the program and of the verb.
std::vector<Candidate> options_at(const CLI::App& app, const Place& place);
std::vector<Candidate> verbs_of(const CLI::App& app);

// The values that an option's type and checks allow: one of a set, or a file. A string option
// without a check may be a file; a positional argument only with a check that says so.
std::vector<Candidate> values_of(const CLI::Option& option);
std::vector<Candidate> positionals_of(const CLI::App& verb);

// For programs that take only options and verbs.
std::vector<Candidate> complete(const CLI::App& app, const std::vector<std::string>& words);

// As they are printed.
std::string to_text(const std::vector<Candidate>& candidates);

}  // namespace completion
