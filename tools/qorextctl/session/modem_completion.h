// SPDX-License-Identifier: Apache-2.0
// What may stand where a command to the modem has got to.
#pragma once

#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

// For the last word: a command, or what it takes. Indications with their fields, services and
// requests come from the tables that the modem works with.
std::vector<Candidate> words_of_modem(const std::vector<std::string>& words,
                                      const StateKeys& state_keys);

}  // namespace qorextctl
