// What may stand where a line has got to.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qorextctl {

struct Candidate {
  std::string text;
  std::string remark = {};  // a few words on it; may be empty
};

struct Completion {
  size_t start = 0;                   // of the word, within the line
  std::vector<Candidate> candidates;  // for the whole word, all beginning as it does

  // What all candidates begin with.
  std::string common() const;
};

// What is known only while a modem runs: the keys of its state, such as "lte.mcc".
using StateKeys = std::function<std::vector<std::string>()>;

// Of a session's line, which ends at the cursor. Names, argument names and values.
Completion complete_line(const std::string& line, const StateKeys& state_keys);

// The same for words that a shell has taken apart, as of "qorextctl request" and "qorextctl modem";
// the last one is to be completed.
std::vector<Candidate> complete_request(const std::vector<std::string>& words);
std::vector<Candidate> complete_modem(const std::vector<std::string>& words,
                                      const StateKeys& state_keys);

// Those that begin with the word.
std::vector<Candidate> beginning_with(const std::string& word, std::vector<Candidate> candidates);

}  // namespace qorextctl
