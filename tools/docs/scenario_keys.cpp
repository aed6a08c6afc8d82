// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "modem/scenario.h"
#include "modem/state/factory.h"
#include "tools/docs/pages.h"

namespace docs {

namespace {

constexpr const char* kIntroduction = R"(# Keys of a scenario file

Every key that `qorext_modem --scenario FILE` takes; [scenarios](scenarios.md) tells what they mean.
Made from the modem's own tables by `./dev docs`; do not edit.

`a.b` is the key `b` of the table `[a]`, `a[].b` one of each table of the list `[[a]]`. The default
is what the factory has; for the keys of a list, what a new entry has. A key without a default has to
be given where its table is.

| Key | Takes | Default |
|---|---|---|
)";

// Where a value is longer than a page is wide.
std::string shortened(const std::string& value) {
  constexpr size_t kMax = 60;
  return value.size() <= kMax ? value : value.substr(0, kMax) + "...";
}

}  // namespace

std::string scenario_keys() {
  modem::Scenario scenario{modem::factory_state(), {}};
  std::string text = kIntroduction;
  for (const modem::KeyRow& row : modem::Archive::names_of(scenario)) {
    std::string value = row.value.empty() ? "" : "`" + shortened(row.value) + "`";
    text += fmt::format("| `{}` | {} | {} |\n", row.path, row.accepts, value);
  }
  return text;
}

}  // namespace docs
