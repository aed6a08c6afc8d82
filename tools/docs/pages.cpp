// SPDX-License-Identifier: Apache-2.0
#include "tools/docs/pages.h"

namespace docs {

namespace {

constexpr Page kPages[] = {
    {"host-protocol.md", host_protocol},
    {"modem-messages.md", modem_messages},
    {"scenario-keys.md", scenario_keys},
};

}  // namespace

std::span<const Page> pages() { return kPages; }

}  // namespace docs
