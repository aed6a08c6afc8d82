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

constexpr size_t kMaxWaitedFrames = 1'000'000;
constexpr double kMaxSeconds = 86400;

std::optional<double> parse_seconds(const std::string& text) {
  char* end = nullptr;
  double seconds = strtod(text.c_str(), &end);
  bool good = end != text.c_str() && *end == '\0' && seconds >= 0 && seconds <= kMaxSeconds;
  return good ? std::optional(seconds) : std::nullopt;
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
  Outcome (Session::*run)(const std::vector<std::string>& words);
};

// clang-format off
const Session::Line Session::kLines[] = {
    {{"raw", "HEX...", "send raw bytes"}, &Session::send_raw},
    {{"modem", "COMMAND...", "send a command to the modem's control socket"}, &Session::send_to_modem},
    {{"wait-unsol", "[N] [SECONDS]", "wait for N unsolicited frames"}, &Session::wait_unsolicited},
    {{"wait-property", "NAME VALUE [SECONDS]", "wait until the property has the value"}, &Session::wait_property},
    {{"wait-log", "TEXT [N] [SECONDS]", "wait for N lines with the text in the daemon's log"}, &Session::wait_log},
    {{"phone", "show", "show the files in the phone root"}, &Session::show_phone},
    {{"expect-failure", "LINE", "run a line that is expected to fail"}, &Session::expect_failure},
    {{"help", "[NAME]", "show all lines, or the arguments and reply fields of a request"}, &Session::help},
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

Outcome Session::run_words(const std::vector<std::string>& words) {
  std::vector<std::string> arguments(words.begin() + 1, words.end());
  for (const Line& line : kLines) {
    if (words[0] == line.command.name) return (this->*line.run)(arguments);
  }
  auto command = parse_command(words, false);
  return command ? send(command->bytes, command->request) : report(command.error());
}

Outcome Session::send_raw(const std::vector<std::string>& words) {
  auto bytes = parse_raw(words);
  return bytes ? send(*bytes, nullptr) : report(bytes.error());
}

Outcome Session::help(const std::vector<std::string>& words) {
  if (words.size() > 1) return report(usage_error("help: expected one name or none"));
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

Outcome Session::expect_failure(const std::vector<std::string>& words) {
  if (words.empty()) return report(usage_error("expect-failure: expected a request or a command"));
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

Outcome Session::send_to_modem(const std::vector<std::string>& words) {
  auto outcome = ask_modem(words, setup_->control(), options_.timeout, printer_, interrupts_.fd());
  return outcome ? *outcome : report(outcome.error());
}

Outcome Session::wait_unsolicited(const std::vector<std::string>& words) {
  auto count = words.empty() ? std::optional<int64_t>(1) : parse_number(words[0]);
  auto seconds = words.size() < 2 ? std::optional(options_.timeout) : parse_seconds(words[1]);
  bool good = count && *count > 0 && *count <= int64_t{kMaxWaitedFrames} && seconds;
  if (!good || words.size() > 2) {
    return report(usage_error("wait-unsol: expected a number of frames and a number of seconds"));
  }
  return note_failure(exchange_->wait_unsolicited(static_cast<size_t>(*count), *seconds));
}

Outcome Session::wait_property(const std::vector<std::string>& words) {
  auto seconds = words.size() < 3 ? std::optional(options_.timeout) : parse_seconds(words[2]);
  if (words.size() < 2 || words.size() > 3 || !seconds) {
    return report(usage_error("wait-property: expected a name, a value and a number of seconds"));
  }
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

Outcome Session::wait_log(const std::vector<std::string>& words) {
  auto count = words.size() < 2 ? std::optional<int64_t>(1) : parse_number(words[1]);
  auto seconds = words.size() < 3 ? std::optional(options_.timeout) : parse_seconds(words[2]);
  if (words.empty() || words.size() > 3 || !count || *count < 1 || !seconds) {
    return report(
        usage_error("wait-log: expected a text, a number of lines and a number of seconds"));
  }
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

Outcome Session::show_phone(const std::vector<std::string>& words) {
  if (words.size() != 1 || words[0] != "show") return report(usage_error("phone: expected show"));
  printer_.phone(setup_->phone_root(), phone_report(setup_->phone_root()));
  return Outcome::success;
}

}  // namespace qorextctl
