// SPDX-License-Identifier: Apache-2.0
#include "bench/plan.h"

#include <android/log.h>

#include <sstream>
#include <stdexcept>

#include "tools/qorextctl/log/log_line.h"

namespace bench {

namespace {

using qorextctl::Bytes;

Bytes read_bytes(std::istream& words) {
  std::string digits;
  words >> digits;
  auto bytes = qorextctl::parse_hex(digits);
  if (!bytes || bytes->empty()) throw std::runtime_error("a step without bytes");
  return *bytes;
}

uint32_t priority_of(char letter) {
  constexpr std::string_view kLetters = "VDIWEFS";
  return static_cast<uint32_t>(kLetters.find(letter)) + ANDROID_LOG_VERBOSE;
}

Step read_log_step(std::istream& words) {
  Bytes bytes = read_bytes(words);
  auto line =
      qorextctl::parse_daemon_line({reinterpret_cast<const char*>(bytes.data()), bytes.size() - 1});
  if (!line || bytes.back() != '\n') throw std::runtime_error("a log step without a log line");
  Bytes text(line->text.begin(), line->text.end());
  text.push_back('\0');
  return {Step::Kind::log, priority_of(line->priority), text};
}

Step read_step(const std::string& kind, std::istream& words) {
  if (kind == "reply") return {Step::Kind::reply, 0, read_bytes(words)};
  if (kind == "log") return read_log_step(words);
  uint32_t number = 0;
  words >> number;
  if (kind == "exchange") return {Step::Kind::exchange, number, read_bytes(words)};
  throw std::runtime_error("no such step: " + kind);
}

}  // namespace

std::vector<PlannedRequest> read_plan(std::istream& text) {
  std::vector<PlannedRequest> plan;
  for (std::string line; std::getline(text, line);) {
    std::istringstream words(line);
    std::string kind;
    words >> kind;
    if (kind == "request") {
      plan.push_back({read_bytes(words), {}});
    } else if (plan.empty()) {
      throw std::runtime_error("a step before the first request");
    } else {
      plan.back().steps.push_back(read_step(kind, words));
    }
  }
  return plan;
}

}  // namespace bench
