// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_report.h"

#include <fmt/format.h>

namespace qorextctl {

namespace {

// For a person: text without quotes.
std::string plain(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string text_of(const Difference& difference) {
  const auto& [field, expected, got] = difference;
  if (!field.empty()) {
    return fmt::format("{}: expected {}, got {}", field, plain(expected), plain(got));
  }
  if (got.is_null()) return "is missing";
  return "nobody expected it: " + plain(got.contains("fields") ? got["fields"] : got);
}

}  // namespace

void ReplayReport::add(size_t line, const std::string& what, const Difference& difference) {
  ++differences_;
  std::string where = line == 0 ? "" : fmt::format("line {}: ", line);
  printer_.result({{"type", "difference"},
                   {"line", line == 0 ? Json() : Json(line)},
                   {"what", what},
                   {"field", difference.field.empty() ? Json() : Json(difference.field)},
                   {"expected", difference.expected},
                   {"got", difference.got}},
                  fmt::format("{}{}: {}", where, what, text_of(difference)));
}

void ReplayReport::summary(const std::string& path) {
  printer_.result({{"type", "replay"},
                   {"recording", path},
                   {"compared", compared_},
                   {"differences", differences_}},
                  fmt::format("{}: {} frames and messages compared, {}", path, compared_,
                              differences_ == 1 ? "1 difference"
                                                : fmt::format("{} differences", differences_)));
}

}  // namespace qorextctl
