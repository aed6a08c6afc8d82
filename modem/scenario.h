// SPDX-License-Identifier: Apache-2.0
// The modem's start state as a TOML file.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "modem/simulator/faults.h"
#include "modem/state/state.h"

namespace modem {

struct Scenario {
  State state;
  std::vector<Fault> faults;
  uint32_t instances = 1;  // of the vendor's service
};

void describe(Archive& archive, Scenario& scenario);

// The message is one line: file, line number, error.
struct ScenarioError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The factory's state with the changes of the file. Throws ScenarioError, also for a file of more
// than 4 MiB or with more than kMaxTomlLevels levels.
Scenario load_scenario(const std::string& path);

// The same for the file's content; errors name `path`.
Scenario read_scenario(std::string_view text, const std::string& path);

// Levels of tables and lists: parts of keys and of headers, brackets. The TOML parser destroys its
// values by recursion and does not limit the parts of a key.
constexpr size_t kMaxTomlLevels = 64;

// The number of the first line, counted from 1, that exceeds kMaxTomlLevels; 0 if there is none. A
// decimal point counts as one of a key. Text after a syntax error may be counted wrongly.
size_t find_excess_levels(std::string_view toml);

}  // namespace modem
