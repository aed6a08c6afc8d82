// SPDX-License-Identifier: Apache-2.0
#include "tools/docs/pages.h"

#include <fmt/format.h>

#include "modem/scenario.h"
#include "modem/state/state.h"

namespace docs {

namespace {

constexpr const char* kIntroduction = R"(# Keys of a scenario file

Every key of a file for `qorext_modem --scenario FILE`, and its type and range. `qorextctl modem set`
changes the same keys in a running modem, all but `instances` and `faults[]`. For what they mean, see
[scenarios](scenarios.md). `./dev docs` prints this page from the modem's tables; do not edit it.

`a.b` is the key `b` of the table `[a]`; `a[].b` is the key `b` of each table of the list `[[a]]`. The
default is the factory's value, or that of a new entry of a list. A key without a default is required
where its table is given.

| Key | Value | Default |
|---|---|---|
)";

// The first part of a value that is longer than a line.
std::string shortened(const std::string& value) {
  constexpr size_t kMax = 60;
  return value.size() <= kMax ? value : value.substr(0, kMax) + "...";
}

constexpr Page kPages[] = {
    {"host-protocol.md", host_protocol},
    {"modem-messages.md", modem_messages},
    {"scenario-keys.md", scenario_keys},
};

}  // namespace

std::string scenario_keys() {
  modem::Scenario scenario{modem::factory_state(), {}};
  std::string text = kIntroduction;
  for (const modem::Key& key : modem::Archive::keys_of(scenario)) {
    std::string value = key.value.empty() ? "" : "`" + shortened(key.value) + "`";
    text += fmt::format("| `{}` | {} | {} |\n", key.path, key.accepts, value);
  }
  return text;
}

std::span<const Page> pages() { return kPages; }

}  // namespace docs
