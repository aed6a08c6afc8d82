// SPDX-License-Identifier: Apache-2.0
// What may stand where a command line has got to, told from the parser that will take it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace completion {

// A program whose first argument is this prints what may stand for the last of the words behind it:
// a line each, a tab between the word and a few words on it. kFiles stands for names of files.
constexpr std::string_view kVerb = "complete";
constexpr const char* kFiles = ":files";

struct Candidate {
  std::string text;
  std::string remark = {};  // may be empty
};

// Those that begin with the word, and kFiles.
std::vector<Candidate> beginning_with(const std::string& word, std::vector<Candidate> candidates);

// The words of a command line, the last one not whole, as the parser takes them.
struct Place {
  const CLI::App* verb = nullptr;             // null: none is given, or the program has none
  const CLI::Option* option = nullptr;        // whose value is to be completed
  std::vector<std::string> positionals = {};  // behind the verb; the last one is to be completed
  std::string word = {};
};
Place place_in(const CLI::App& app, const std::vector<std::string>& words);

// The options of the program and of the verb; without a verb also the verbs.
std::vector<Candidate> options_at(const CLI::App& app, const Place& place);
std::vector<Candidate> verbs_of(const CLI::App& app);

// What an option's checks and type tell of its value: one of a set, or a file. A text without a
// check may be a file too; a word behind the verb is none without a check that says so.
std::vector<Candidate> values_of(const CLI::Option& option);
std::vector<Candidate> positionals_of(const CLI::App& verb);

// Options, verbs and options' values, for programs that take nothing else.
std::vector<Candidate> complete(const CLI::App& app, const std::vector<std::string>& words);

// As they are printed.
std::string to_text(const std::vector<Candidate>& candidates);

}  // namespace completion
