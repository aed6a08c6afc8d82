// SPDX-License-Identifier: Apache-2.0
// What may stand where a line has got to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/completion/command_line.h"

namespace qorextctl {

using completion::Candidate;

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

}  // namespace qorextctl
