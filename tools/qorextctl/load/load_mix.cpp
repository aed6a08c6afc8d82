// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load_mix.h"

#include <fmt/format.h>

#include <fstream>
#include <sstream>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

namespace {

using Words = std::vector<std::string>;

constexpr uint32_t kMaxWeight = 1'000'000;
constexpr const char* kUnknown = "unknown";
// The daemon has no handler for this id.
const Words kUnknownRequest = {"expect-failure", "generic", "id=0x50506"};

std::optional<uint32_t> weight_of(const std::string& text) {
  auto number = parse_number(text);
  bool good = number && *number >= 1 && *number <= kMaxWeight;
  return good ? std::optional(static_cast<uint32_t>(*number)) : std::nullopt;
}

Error wrong_weight(const std::string& text) {
  return usage_error(fmt::format("weight '{}': expected a number (1 to {})", text, kMaxWeight));
}

// The request's name and required arguments, with the values that completion offers.
Words with_offered_arguments(const std::string& name) {
  Words words = {name};
  const Request* request = find_request(name);
  if (!request) return words;
  for (const Argument& argument : request->payload.arguments) {
    if (!is_required(argument)) continue;
    auto values = complete_request({name, argument.field.name + std::string("=")});
    if (!values.empty()) words.push_back(values[0].text);
  }
  return words;
}

}  // namespace

std::optional<Error> Mix::add(uint32_t weight, const std::string& name, const Words& words) {
  MixEntry entry{.name = name, .bytes = {}, .weight = weight};
  entry.expects_failure = !words.empty() && words[0] == "expect-failure";
  Words line(words.begin() + (entry.expects_failure ? 1 : 0), words.end());
  if (!line.empty() && line[0] == "raw") {
    auto bytes = parse_raw(std::span(line).subspan(1));
    if (!bytes) return bytes.error();
    entry.bytes = *bytes;
  } else {
    auto command = parse_command(line, false);
    if (!command) return command.error();
    entry.bytes = command->bytes;
    entry.request = command->request;
  }
  if (entry.name.empty()) entry.name = line[0];
  weights_ += weight;
  entries_.push_back(std::move(entry));
  return std::nullopt;
}

Result<Mix> Mix::parse(const std::string& text) {
  Mix mix;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ',');) {
    size_t colon = part.find(':');
    auto weight = colon == std::string::npos ? 1 : weight_of(part.substr(colon + 1));
    if (!weight) return wrong_weight(part.substr(colon + 1));
    std::string name = part.substr(0, colon);
    Words words = name == kUnknown ? kUnknownRequest : with_offered_arguments(name);
    if (auto error = mix.add(*weight, name, words)) return *error;
  }
  if (mix.entries_.empty())
    return usage_error("--mix: expected requests, such as nv-read:3,get-nam");
  return mix;
}

Result<Mix> Mix::read(const std::string& path) {
  Mix mix;
  std::ifstream file(path);
  if (!file) return usage_error(fmt::format("cannot read '{}'", path));
  size_t number = 0;
  LineReader lines(file);
  std::string line;
  for (auto read = lines.next(line); read != LineReader::Line::none; read = lines.next(line)) {
    ++number;
    auto wrong = [&](const Error& error) {
      return usage_error(fmt::format("{}:{}: {}", path, number, error.message));
    };
    if (read == LineReader::Line::too_long) {
      return wrong(usage_error(fmt::format("is longer than {} bytes", kMaxLineBytes)));
    }
    auto words = split_line(line);
    if (!words) return wrong(usage_error("a quote is not closed"));
    if (words->empty()) continue;
    auto weight = weight_of((*words)[0]);
    if (!weight) return wrong(wrong_weight((*words)[0]));
    auto error = mix.add(*weight, "", {words->begin() + 1, words->end()});
    if (error) return wrong(*error);
  }
  if (mix.entries_.empty()) return usage_error(fmt::format("{}: contains no request", path));
  return mix;
}

// Not std::discrete_distribution, whose results differ between libraries.
const MixEntry& Mix::choose(std::mt19937& random) const {
  uint64_t place = random() % weights_;
  for (const MixEntry& entry : entries_) {
    if (place < entry.weight) return entry;
    place -= entry.weight;
  }
  return entries_.back();
}

}  // namespace qorextctl
