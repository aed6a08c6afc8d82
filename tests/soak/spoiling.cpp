// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/spoiling.h"

#include <fmt/format.h>

namespace soak {

namespace {

// No first TLV is shorter than its header and one byte, so these truncations leave nothing whole.
constexpr SpoilingKind kSpoilings[] = {
    {"error", false, Got::refusal},
    {"delay delay_ms=2", true, Got::answer},
    {"stray", true, Got::answer},
    {"duplicate", true, Got::answer},
    {"truncated bytes=0", true, Got::nothing},
    {"truncated bytes=2", true, Got::nothing},
    {"truncated bytes=3", true, Got::nothing},
    {"malformed", true, Got::nothing},
    {"garbage", true, Got::nothing},
};

// The last one's answer comes while the next request waits for its own, or for nothing.
constexpr SpoilingKind kSlowSpoilings[] = {
    {"silent", false, Got::nothing},
    {"transaction", true, Got::nothing},
    {"delay delay_ms=15300", true, Got::nothing},
};

}  // namespace

std::span<const SpoilingKind> all_spoilings() { return kSpoilings; }
std::span<const SpoilingKind> slow_spoilings() { return kSlowSpoilings; }

std::vector<std::string> Spoiling::commands() const {
  std::vector<std::string> commands;
  if (spared != 0)
    commands.push_back(fmt::format("fault delay message={} times={}", message, spared));
  commands.push_back(fmt::format("fault {} message={} times=1 result={} error={}", kind->fault,
                                 message, result, error));
  return commands;
}

}  // namespace soak
