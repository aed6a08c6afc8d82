// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/ask_modem.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/phone/phone_files.h"
#include "tools/qorextctl/phone/phone_report.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

namespace {

using Words = std::vector<std::string>;

constexpr int64_t kMaxFrames = 1'000'000;
constexpr double kMaxSeconds = 86400;
constexpr size_t kAnyNumber = SIZE_MAX;

// The error for a word that is not a number in the range.
Error wrong_number(const char* line, const std::string& word, bool is_number,
                   const std::string& range) {
  return usage_error(is_number ? fmt::format("{}: {} is out of range ({})", line, word, range)
                               : fmt::format("{}: '{}' is not a number", line, word));
}

Result<int64_t> count_at(const char* line, const Words& words, size_t index, int64_t max) {
  if (index >= words.size()) return int64_t{1};
  auto count = parse_number(words[index]);
  if (count && *count >= 1 && *count <= max) return *count;
  return wrong_number(line, words[index], count.has_value(), fmt::format("1 to {}", max));
}

Result<double> seconds_at(const char* line, const Words& words, size_t index,
                          double default_seconds) {
  if (index >= words.size()) return default_seconds;
  const std::string& word = words[index];
  char* end = nullptr;
  double seconds = strtod(word.c_str(), &end);
  bool is_number = !word.empty() && *end == '\0';
  if (is_number && seconds >= 0 && seconds <= kMaxSeconds) return seconds;
  return wrong_number(line, word, is_number, fmt::format("0 to {} s", kMaxSeconds));
}

std::string row(const std::string& usage, const char* help) {
  return fmt::format("  {:<39} {}\n", usage, help);
}

std::string row(const LineCommand& command) {
  return row(fmt::format("{} {}", command.name, command.arguments), command.help);
}

std::string requests_text() {
  std::string text;
  for (const Request& request : catalogue()) text += row(request.name, request.description);
  return text;
}

}  // namespace

struct Session::Line {
  LineCommand command;
  size_t min_words;  // after the name
  size_t max_words;
  Outcome (Session::*run)(const Words& words);
};

// clang-format off
const Session::Line Session::kLines[] = {
    {{"raw", "HEX...", "send raw bytes"}, 0, kAnyNumber, &Session::send_raw},
    {{"modem", "COMMAND...", "send a command to the modem's control socket"}, 0, kAnyNumber, &Session::send_to_modem},
    {{"wait-unsol", "[N] [SECONDS]", "wait for N unsolicited frames"}, 0, 2, &Session::wait_unsolicited},
    {{"wait-property", "NAME VALUE [SECONDS]", "wait until the property has the value"}, 2, 3, &Session::wait_property},
    {{"wait-log", "TEXT [N] [SECONDS]", "wait for N lines with the text in the daemon's log"}, 1, 3, &Session::wait_log},
    {{"phone", "show", "show the files in the phone root"}, 1, 1, &Session::show_phone},
    {{"expect-failure", "LINE", "run a line that is expected to fail"}, 1, kAnyNumber, &Session::expect_failure},
    {{"help", "[NAME]", "show all lines, or the arguments and reply fields of a request"}, 0, 1, &Session::help},
};
// clang-format on

std::vector<LineCommand> Session::commands() {
  std::vector<LineCommand> all;
  for (const Line& line : kLines) all.push_back(line.command);
  return all;
}

std::string session_lines() {
  std::string text = row("NAME [KEY=VALUE]...", "a request");
  for (const LineCommand& command : Session::commands()) text += row(command);
  return text + row("# COMMENT", "is skipped");
}

Outcome Session::run_words(const Words& words) {
  Words arguments(words.begin() + 1, words.end());
  for (const Line& line : kLines) {
    if (words[0] != line.command.name) continue;
    if (arguments.size() >= line.min_words && arguments.size() <= line.max_words) {
      return (this->*line.run)(arguments);
    }
    return report(usage_error(fmt::format("{}: expected {}", words[0], line.command.arguments)));
  }
  auto command = parse_command(words, false);
  return command ? send(command->bytes, command->request) : report(command.error());
}

Outcome Session::send_raw(const Words& words) {
  auto bytes = parse_raw(words);
  return bytes ? send(*bytes, nullptr) : report(bytes.error());
}

Outcome Session::help(const Words& words) {
  const LineCommand* command = nullptr;
  for (const Line& line : kLines) {
    if (!words.empty() && words[0] == line.command.name) command = &line.command;
  }
  const Request* request = words.empty() || command ? nullptr : find_request(words[0]);
  if (request) {
    printer_.request_list({request});
  } else if (command) {
    bool is_modem = std::string_view(command->name) == "modem";
    printer_.help(row(*command) + (is_modem ? modem_command_help() : ""));
  } else if (words.empty()) {
    printer_.help(session_lines() + "requests:\n" + requests_text());
  } else {
    return report(unknown_request(words[0]));
  }
  return Outcome::success;
}

Outcome Session::expect_failure(const Words& words) {
  bool failed_before = has_failed_;
  Outcome outcome = run_words(words);
  if (outcome != Outcome::refused) {
    return outcome == Outcome::success
               ? report(
                     {Outcome::refused, fmt::format("{}: succeeded, expected a failure", words[0])})
               : outcome;
  }
  has_failed_ = failed_before;
  return Outcome::success;
}

Outcome Session::send_to_modem(const Words& words) {
  auto outcome = ask_modem(words, setup_->control(), options_.timeout, printer_, interrupts_.fd());
  return outcome ? *outcome : report(outcome.error());
}

Outcome Session::wait_unsolicited(const Words& words) {
  auto count = count_at("wait-unsol", words, 0, kMaxFrames);
  if (!count) return report(count.error());
  auto seconds = seconds_at("wait-unsol", words, 1, options_.timeout);
  if (!seconds) return report(seconds.error());
  return note_failure(exchange_->wait_unsolicited(static_cast<size_t>(*count), *seconds));
}

Outcome Session::wait_property(const Words& words) {
  auto seconds = seconds_at("wait-property", words, 2, options_.timeout);
  if (!seconds) return report(seconds.error());
  std::optional<std::string> value;
  auto has_value = [&] {
    value = read_property(setup_->phone_root(), words[0]);
    return value == words[1];
  };
  if (exchange_->wait_until(has_value, Deadline::in_seconds(*seconds))) {
    printer_.property(words[0], words[1]);
    return Outcome::success;
  }
  std::string state = value ? fmt::format("is '{}'", *value) : "is not set";
  return report(transport_error(fmt::format("property {} {}", words[0], state)));
}

Outcome Session::wait_log(const Words& words) {
  auto count = count_at("wait-log", words, 1, INT64_MAX);
  if (!count) return report(count.error());
  auto seconds = seconds_at("wait-log", words, 2, options_.timeout);
  if (!seconds) return report(seconds.error());
  Deadline deadline = Deadline::in_seconds(*seconds);
  for (int64_t found = 0; found < *count; ++found) {
    if (!find_in_log(words[0], deadline)) {
      return note_failure(report(transport_error(
          fmt::format("{} of {} lines with '{}' came in the log", found, *count, words[0]))));
    }
  }
  return Outcome::success;
}

// After the end of the daemon its last lines may not have been read yet.
bool Session::find_in_log(const std::string& text, Deadline deadline) {
  constexpr std::chrono::milliseconds kPollTime{20};
  std::optional<size_t> found;
  auto find = [&](Deadline until) {
    found = daemon_->log().find(text, next_log_line_, until);
    return found.has_value();
  };
  exchange_->wait_until([&] { return find(Deadline::in(kPollTime)); }, deadline);
  if (!found && !exchange_->interrupted()) find(deadline);
  if (found) next_log_line_ = *found + 1;
  return found.has_value();
}

Outcome Session::show_phone(const Words& words) {
  if (words[0] != "show") return report(usage_error("phone: expected show"));
  printer_.phone(setup_->phone_root(), phone_report(setup_->phone_root()));
  return Outcome::success;
}

}  // namespace qorextctl
