#include "plan.h"

#include <sstream>
#include <stdexcept>

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

Step read_step(const std::string& kind, std::istream& words) {
  if (kind == "reply") return {Step::Kind::reply, 0, read_bytes(words)};
  uint32_t number = 0;
  words >> number;
  if (kind == "log") {
    Step step{Step::Kind::log, number, read_bytes(words)};
    step.bytes.push_back('\0');
    return step;
  }
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
