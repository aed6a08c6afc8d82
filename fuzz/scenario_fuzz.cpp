// SPDX-License-Identifier: Apache-2.0
// Scenario files of the simulated modem.
#include "fuzz/support.h"
#include "modem/scenario.h"
#include "modem/state/archive.h"
#include "modem/state/state_keys.h"

namespace {

constexpr size_t kMaxText = 500'000;

std::string consume_text(FuzzedDataProvider& input) {
  if (input.ConsumeBool()) return fuzz::consume_stretched(input, kMaxText);
  return input.ConsumeRemainingBytesAsString();
}

}  // namespace

// A valid scenario yields a state that can be converted to JSON; an invalid one, one line of error.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  std::string text = consume_text(input);
  try {
    modem::Scenario scenario = modem::read_scenario(text, "file");
    FUZZ_REQUIRE(modem::Archive::to_json(scenario.state).is_object());
  } catch (const modem::ScenarioError& error) {
    std::string what = error.what();
    FUZZ_REQUIRE(what.starts_with("file:"));
    FUZZ_REQUIRE(what.find('\n') == std::string::npos);
  }
  return 0;
}
