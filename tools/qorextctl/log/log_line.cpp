#include "log/log_line.h"

#include <regex>
#include <string>
#include <vector>

namespace qorextctl {

namespace {

// No head is longer; the expressions see no more of a line.
constexpr size_t kMostHead = 160;

// The group is the line's source.
const std::vector<std::regex>& heads() {
  static const std::string date =
      R"((?:\d{4}-)?\d\d-\d\d +\d\d:\d\d:\d\d(?:[.]\d{3,9})?(?: [+-]\d{4})? +)";
  static const std::string user = R"((?:[a-z_]\w* +|\d+ +)?)";
  static const std::vector<std::regex> all = {
      std::regex("(?:" + date + R"()?[VDIWEFS]/RIL-QOREXT *\(( *\d+)\): )"),  // brief, time
      std::regex(date + user + R"((\d+ +\d+) [VDIWEFS] RIL-QOREXT *: )"),     // threadtime
      std::regex("RIL-QOREXT [VDIWEFS] " + date + R"((\d+ +\d+) )"),          // to a terminal
  };
  return all;
}

}  // namespace

std::optional<DaemonLine> parse_daemon_line(std::string_view line) {
  std::string_view start = line.substr(0, kMostHead);
  if (start.find("RIL-QOREXT") == std::string_view::npos) return std::nullopt;
  for (const std::regex& head : heads()) {
    std::cmatch match;
    bool found = std::regex_search(start.data(), start.data() + start.size(), match, head,
                                   std::regex_constants::match_continuous);
    if (!found) continue;
    auto size = static_cast<size_t>(match.length());
    std::string_view text = line.substr(size);
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    std::string_view source =
        line.substr(static_cast<size_t>(match.position(1)), static_cast<size_t>(match.length(1)));
    return DaemonLine{line.substr(0, size), source, text};
  }
  return std::nullopt;
}

}  // namespace qorextctl
