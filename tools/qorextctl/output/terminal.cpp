// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/output/terminal.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace qorextctl {

namespace {

constexpr const char* kBold = "1";
constexpr const char* kGreen = "32";
constexpr const char* kRed = "31";

// NO_COLOR counts if it is set and not empty (https://no-color.org).
bool is_unwanted() {
  const char* no_color = getenv("NO_COLOR");
  const char* terminal = getenv("TERM");
  return (no_color && *no_color) || !terminal || std::string_view(terminal) == "dumb";
}

}  // namespace

Colours Colours::choose(ColourWhen when, int fd) {
  if (when != ColourWhen::automatic) return Colours(when == ColourWhen::always);
  return Colours(isatty(fd) == 1 && !is_unwanted());
}

std::string Colours::painted(const char* code, const std::string& text) const {
  return on_ ? fmt::format("\x1B[{}m{}\x1B[0m", code, text) : text;
}

std::string Colours::title(const std::string& text) const { return painted(kBold, text); }
std::string Colours::good(const std::string& text) const { return painted(kGreen, text); }
std::string Colours::bad(const std::string& text) const { return painted(kRed, text); }

}  // namespace qorextctl
