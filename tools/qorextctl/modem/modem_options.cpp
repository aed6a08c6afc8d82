// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iterator>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/modem_words.h"

namespace qorextctl {

namespace {

using Kind = ModemOption::Kind;

constexpr const char* kNoWait = "--no-wait";

constexpr ModemOption kOptions[] = {
    {"--count", Kind::number, "indicate, hob-save: how many"},
    {"--interval-ms", Kind::number, "indicate, hob-save: time between two"},
    {"--file", Kind::path, "kpi: the log, read by the modem"},
    {"--package", Kind::number, "kpi, kpi-record: the first package's id (0)"},
    {"--packet-size", Kind::number, "kpi: bytes of the log in a packet (as many as fit)"},
    {"--header", Kind::word, "kpi: the header word of the packages (01C0FFEE)"},
    {"--headerless", Kind::flag, "kpi: packages without a header word"},
    {"--lose", Kind::number, "kpi: leave out this packet, counted from 1"},
    {"--reorder", Kind::number_or_not, "kpi: send packet N+1 before packet N (2)"},
    {kNoWait, Kind::flag, "kpi, hob-save: do not wait for the end"},
};

// For --reorder without a number: the first packet in the wrong place would be another defect.
constexpr int64_t kReordered = 2;

const ModemOption* find_option(const std::string& word) {
  const auto* found =
      std::find_if(std::begin(kOptions), std::end(kOptions),
                   [&word](const ModemOption& option) { return word == option.name; });
  return found == std::end(kOptions) ? nullptr : found;
}

// Null when the option does not accept the text.
Json value_of(const ModemOption& option, const std::string& text) {
  if (option.kind == Kind::path) return std::filesystem::absolute(text).string();
  if (option.kind == Kind::word) {
    auto word = parse_word(text);
    return word ? Json(*word) : Json();
  }
  auto number = parse_number(text);
  return number ? Json(*number) : Json();
}

Error wrong_value(const ModemOption& option) {
  const char* what = option.kind == Kind::path   ? "a file"
                     : option.kind == Kind::word ? "eight hex digits"
                                                 : "a number";
  return usage_error(fmt::format("modem: {}: expected {}", option.name, what));
}

// Stores an option; returns how many of the words after it belong to it.
Result<size_t> take_option(Json& command, const ModemOption& option,
                           std::span<const std::string> after) {
  std::string name = option.name;
  if (name == kNoWait) {
    command["wait"] = false;
    return size_t{0};
  }
  Json& member = command[json_key(name.substr(2))];
  if (option.kind == Kind::flag) {
    member = true;
    return size_t{0};
  }
  if (!after.empty()) member = value_of(option, after[0]);
  if (!member.is_null()) return size_t{1};
  if (option.kind != Kind::number_or_not) return wrong_value(option);
  member = kReordered;
  return size_t{0};
}

}  // namespace

std::span<const ModemOption> modem_options() { return kOptions; }

Result<std::vector<std::string>> take_options(Json& command, std::span<const std::string> words) {
  std::vector<std::string> others;
  for (size_t i = 0; i < words.size(); ++i) {
    const ModemOption* option = find_option(words[i]);
    if (!option) {
      others.push_back(words[i]);
      continue;
    }
    auto taken = take_option(command, *option, words.subspan(i + 1));
    if (!taken) return taken.error();
    i += *taken;
  }
  return others;
}

std::optional<uint32_t> parse_word(const std::string& text) {
  size_t start = text.rfind("0x", 0) == 0 ? 2 : 0;
  uint32_t word = 0;
  const char* end = text.data() + text.size();
  auto [rest, error] = std::from_chars(text.data() + start, end, word, 16);
  bool good = error == std::errc() && rest == end && text.size() - start == 8;
  return good ? std::optional(word) : std::nullopt;
}

}  // namespace qorextctl
