// SPDX-License-Identifier: Apache-2.0
// The state that the modem starts from, as a TOML file.
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

// The message is one line: file, line, what is wrong.
struct ScenarioError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The factory's content with what the file changes. Throws ScenarioError; also for a file of more
// than 4 MiB, or nested deeper than kMaxTomlLevels.
Scenario load_scenario(const std::string& path);

// The same from the file's text; errors name `path`.
Scenario read_scenario(std::string_view text, const std::string& path);

}  // namespace modem
