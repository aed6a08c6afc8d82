// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/log/log_line.h"

#include <regex>
#include <string>
#include <vector>

namespace qorextctl {

namespace {

// The expressions search only this part of a line; no head is longer.
constexpr size_t kMaxHead = 160;

// A format of a line's head, with the groups of its expression.
struct Form {
  std::regex head;
  size_t source;
  size_t priority;
};

const std::vector<Form>& forms() {
  static const std::string date =
      R"((?:\d{4}-)?\d\d-\d\d +\d\d:\d\d:\d\d(?:[.]\d{3,9})?(?: [+-]\d{4})? +)";
  static const std::string user = R"((?:[a-z_]\w* +|\d+ +)?)";
  static const std::vector<Form> all = {
      // brief, time
      {std::regex("(?:" + date + R"()?([VDIWEFS])/RIL-QOREXT *\(( *\d+)\): )"), 2, 1},
      // threadtime; also the terminal format of current log libraries
      {std::regex(date + user + R"((\d+ +\d+) ([VDIWEFS]) RIL-QOREXT *: )"), 1, 2},
      // the terminal format of older log libraries
      {std::regex("RIL-QOREXT ([VDIWEFS]) " + date + R"((\d+ +\d+) )"), 2, 1},
  };
  return all;
}

std::string_view group(std::string_view line, const std::cmatch& match, size_t number) {
  return line.substr(static_cast<size_t>(match.position(number)),
                     static_cast<size_t>(match.length(number)));
}

}  // namespace

std::optional<DaemonLine> parse_daemon_line(std::string_view line) {
  std::string_view start = line.substr(0, kMaxHead);
  if (start.find("RIL-QOREXT") == std::string_view::npos) return std::nullopt;
  for (const Form& form : forms()) {
    std::cmatch match;
    bool found = std::regex_search(start.data(), start.data() + start.size(), match, form.head,
                                   std::regex_constants::match_continuous);
    if (!found) continue;
    auto size = static_cast<size_t>(match.length());
    std::string_view text = line.substr(size);
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    return DaemonLine{line.substr(0, size), group(line, match, form.source),
                      group(line, match, form.priority).front(), text};
  }
  return std::nullopt;
}

}  // namespace qorextctl
