// SPDX-License-Identifier: Apache-2.0
// Names of files, where one is to be typed.
#pragma once

#include <string>
#include <vector>

#include "common/completion/command_line.h"

namespace qorextctl {

// What lies in the folder that the word `begun` names, each with `front` before it. A folder's name
// ends in a slash.
std::vector<completion::Candidate> files_beginning_with(const std::string& front,
                                                        const std::string& begun);

}  // namespace qorextctl
