// SPDX-License-Identifier: Apache-2.0
// Completion of a session's lines and of the words of "request" and "modem".
#pragma once

#include <string>
#include <vector>

#include "common/completion/command_line.h"

namespace qorextctl {

using completion::Candidate;

struct Completion {
  size_t start = 0;                   // of the word, within the line
  std::vector<Candidate> candidates;  // for the whole word, all beginning with it

  // The longest common beginning of the candidates.
  std::string common() const;
};

// For the last word of a session's line, which ends at the cursor.
Completion complete_line(const std::string& line);

// For the last of the words after "qorextctl request" and "qorextctl modem".
std::vector<Candidate> complete_request(const std::vector<std::string>& words);
std::vector<Candidate> complete_modem(const std::vector<std::string>& words);

// All that may be at the place of the last word after "modem".
std::vector<Candidate> words_of_modem(const std::vector<std::string>& words);

}  // namespace qorextctl
