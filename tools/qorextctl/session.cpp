#include "session.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "arguments.h"
#include "help_topics.h"
#include "launch.h"
#include "modem_control.h"
#include "modem_wait.h"
#include "phone_report.h"
#include "properties.h"
#include "recorder.h"
#include "values.h"

namespace qorextctl {

namespace {

constexpr size_t kMostWaitedFrames = 1'000'000;
constexpr double kMostSeconds = 86400;

std::optional<double> parse_seconds(const std::string& text) {
  char* end = nullptr;
  double seconds = strtod(text.c_str(), &end);
  bool good = end != text.c_str() && *end == '\0' && seconds >= 0 && seconds <= kMostSeconds;
  return good ? std::optional(seconds) : std::nullopt;
}

}  // namespace

struct Session::Line {
  LineCommand command;
  Outcome (Session::*run)(const std::vector<std::string>& words);
};

// clang-format off
const Session::Line Session::kLines[] = {
    {{"raw", "HEX...", "bytes as they are"}, &Session::send_raw},
    {{"modem", "COMMAND...", "a command to the modem's control socket"}, &Session::ask_modem},
    {{"wait-unsol", "[N] [SECONDS]", "until N unsolicited frames have come"}, &Session::wait_unsolicited},
    {{"wait-property", "NAME VALUE [SECONDS]", "until the property has the value"}, &Session::wait_property},
    {{"wait-log", "TEXT [N] [SECONDS]", "until N lines of the daemon's log hold the text"}, &Session::wait_log},
    {{"phone", "show", "what lies in the phone's root"}, &Session::show_phone},
    {{"expect-failure", "LINE", "a failure is a success then"}, &Session::expect_failure},
    {{"help", "[NAME]", "all lines, or a request's arguments and its reply's fields"}, &Session::help},
};
// clang-format on

std::vector<LineCommand> Session::commands() {
  std::vector<LineCommand> all;
  for (const Line& line : kLines) all.push_back(line.command);
  return all;
}

Result<std::unique_ptr<Session>> Session::start(const Options& options, Printer& printer,
                                                Recorder* recorder) {
  std::unique_ptr<Session> session(new Session(options, printer, recorder));
  if (auto error = session->open()) return *error;
  return session;
}

std::optional<Error> Session::open() {
  auto setup = Setup::create(options_.setup, interrupts_.fd());
  if (!setup) return setup.error();
  setup_ = std::move(*setup);
  if (recorder_) {
    if (auto error = recorder_->watch(setup_->control(), options_.timeout)) return error;
  }
  LogCapture::Listener on_log;
  LogCapture::TimedListener on_timed_log;
  if (options_.log) on_log = [this](const std::string& line) { printer_.log_line(line); };
  if (recorder_) {
    on_timed_log = [this](const std::string& line, int64_t time) {
      recorder_->add_log(line, time);
    };
  }
  auto daemon = launch_daemon(options_, *setup_, std::move(on_log), std::move(on_timed_log));
  if (!daemon) return daemon.error();
  daemon_ = std::move(*daemon);
  exchange_.emplace(*daemon_, printer_, options_.timeout, interrupts_.fd());
  if (recorder_) record_exchange();
  return std::nullopt;
}

// What the daemon does by itself stands in front of the first request then.
void Session::record_exchange() {
  exchange_->listen([this](FrameKind kind, View frame) { recorder_->add_frame(kind, frame); });
  daemon_->log().wait_for("waiting for data", Deadline::in_seconds(options_.timeout));
}

Outcome Session::finish_recording() {
  Deadline deadline = Deadline::in_seconds(options_.timeout);
  daemon_->log().wait_end(deadline);
  if (auto status = daemon_->wait_exit(deadline)) recorder_->add_exit(*status);
  recorder_->collect();
  auto error = recorder_->write();
  return error ? complain(*error) : Outcome::success;
}

Outcome Session::complain(Error error) {
  if (line_ != 0) error.message = fmt::format("line {}: {}", line_, error.message);
  printer_.error(error);
  return error.outcome;
}

Outcome Session::judged(Outcome outcome) {
  daemon_failed_ = daemon_failed_ || outcome != Outcome::success;
  return outcome;
}

Outcome Session::send(View request, const Request* named) {
  return judged(exchange_->run(request, named));
}

Outcome Session::run_line(const std::string& line) {
  auto words = split_line(line);
  if (!words) return complain(usage_error("a quote is not closed"));
  return words->empty() ? Outcome::success : run_words(*words);
}

Outcome Session::run_words(const std::vector<std::string>& words) {
  std::vector<std::string> behind(words.begin() + 1, words.end());
  for (const Line& line : kLines) {
    if (words[0] == line.command.name) return (this->*line.run)(behind);
  }
  auto command = parse_command(words, false);
  return command ? send(command->bytes, command->request) : complain(command.error());
}

Outcome Session::send_raw(const std::vector<std::string>& words) {
  auto bytes = parse_raw(words);
  return bytes ? send(*bytes, nullptr) : complain(bytes.error());
}

Outcome Session::help(const std::vector<std::string>& words) {
  if (words.size() > 1) return complain(usage_error("help: give one name, or none"));
  auto topic = words.empty() ? all_help() : help_on(words[0]);
  if (!topic) return complain(topic.error());
  printer_.help(*topic);
  return Outcome::success;
}

Outcome Session::expect_failure(const std::vector<std::string>& words) {
  if (words.empty()) return complain(usage_error("expect-failure: give a request or a command"));
  bool failed_before = daemon_failed_;
  Outcome outcome = run_words(words);
  if (outcome != Outcome::refused) {
    return outcome == Outcome::success
               ? complain({Outcome::refused, fmt::format("{}: a success, not a failure", words[0])})
               : outcome;
  }
  daemon_failed_ = failed_before;
  return Outcome::success;
}

Outcome Session::ask_modem(const std::vector<std::string>& words) {
  auto outcome = run_modem(words, setup_->control(), options_.timeout, printer_, interrupts_.fd());
  return outcome ? *outcome : complain(outcome.error());
}

Outcome Session::wait_unsolicited(const std::vector<std::string>& words) {
  auto count = words.empty() ? std::optional<int64_t>(1) : parse_number(words[0]);
  auto seconds = words.size() < 2 ? std::optional(options_.timeout) : parse_seconds(words[1]);
  bool good = count && *count > 0 && *count <= int64_t{kMostWaitedFrames} && seconds;
  if (!good || words.size() > 2) {
    return complain(usage_error("wait-unsol: give a number of frames and a number of seconds"));
  }
  return judged(exchange_->wait_unsolicited(static_cast<size_t>(*count), *seconds));
}

Outcome Session::wait_property(const std::vector<std::string>& words) {
  auto seconds = words.size() < 3 ? std::optional(options_.timeout) : parse_seconds(words[2]);
  if (words.size() < 2 || words.size() > 3 || !seconds) {
    return complain(usage_error("wait-property: give a name, a value and a number of seconds"));
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
  std::string told = value ? fmt::format("is '{}'", *value) : "is not set";
  return complain(transport_error(fmt::format("property {} {}", words[0], told)));
}

Outcome Session::wait_log(const std::vector<std::string>& words) {
  auto count = words.size() < 2 ? std::optional<int64_t>(1) : parse_number(words[1]);
  auto seconds = words.size() < 3 ? std::optional(options_.timeout) : parse_seconds(words[2]);
  if (words.empty() || words.size() > 3 || !count || *count < 1 || !seconds) {
    return complain(usage_error("wait-log: give a text, a number of lines and of seconds"));
  }
  Deadline deadline = Deadline::in_seconds(*seconds);
  for (int64_t come = 0; come < *count; ++come) {
    if (!find_in_log(words[0], deadline)) {
      return judged(complain(transport_error(
          fmt::format("{} of {} lines with '{}' came in the log", come, *count, words[0]))));
    }
  }
  return Outcome::success;
}

// The last lines of a daemon that has ended may still be on their way.
bool Session::find_in_log(const std::string& text, Deadline deadline) {
  constexpr std::chrono::milliseconds kPause{20};
  std::optional<size_t> found;
  auto look = [&](Deadline until) {
    found = daemon_->log().find(text, next_log_line_, until);
    return found.has_value();
  };
  exchange_->wait_until([&] { return look(Deadline::in(kPause)); }, deadline);
  if (!found && !exchange_->interrupted()) look(deadline);
  if (found) next_log_line_ = *found + 1;
  return found.has_value();
}

Outcome Session::show_phone(const std::vector<std::string>& words) {
  if (words.size() != 1 || words[0] != "show") return complain(usage_error("phone: give show"));
  printer_.phone(setup_->phone_root(), phone_report(setup_->phone_root()));
  return Outcome::success;
}

// Runs the whole lines in `text` and leaves the rest of it.
Outcome Session::run_whole_lines(std::string& text) {
  Outcome worst = Outcome::success;
  size_t start = 0;
  for (size_t end = text.find('\n'); end != std::string::npos && !exchange_->over();
       end = text.find('\n', start)) {
    ++line_;
    worst = std::max(worst, run_line(text.substr(start, end - start)));
    exchange_->print_unsolicited();
    if (recorder_) recorder_->collect();
    start = end + 1;
  }
  text.erase(0, start);
  return worst;
}

Outcome Session::run_lines(int fd) {
  Outcome worst = Outcome::success;
  std::string text;
  char buffer[4096];
  ssize_t size = 1;
  while (size != 0 && !exchange_->over()) {
    exchange_->wait_readable(fd);
    if (exchange_->over()) break;
    size = read(fd, buffer, sizeof buffer);
    if (size < 0 && errno != EINTR) break;
    if (size > 0) text.append(buffer, static_cast<size_t>(size));
    if (size == 0 && !text.empty()) text += '\n';
    worst = std::max(worst, run_whole_lines(text));
  }
  line_ = 0;
  return worst;
}

bool Session::wait_input(int fd) {
  exchange_->wait_readable(fd);
  return !exchange_->over();
}

bool Session::resume() {
  if (!interrupts_.take()) return false;
  exchange_->resume();
  return !exchange_->over();
}

Outcome Session::finish(Outcome outcome, bool print_exit) {
  outcome = std::max(outcome, judged(exchange_->finish(print_exit)));
  if (recorder_) outcome = std::max(outcome, finish_recording());
  if (!daemon_failed_ || options_.log) return outcome;
  daemon_->log().wait_end(Deadline::in_seconds(options_.timeout));
  printer_.log_tail("the daemon's log", daemon_->log().lines());
  printer_.log_tail("the modem's log", setup_->modem_log().lines());
  return outcome;
}

Result<Outcome> run_modem(std::span<const std::string> words, const std::string& control,
                          double timeout_seconds, Printer& printer, int interrupt_fd) {
  auto command = modem_command(words);
  if (!command) return command.error();
  if (control.empty()) return usage_error("modem: give --control PATH, the modem's control socket");
  auto modem = ModemControl::connect(control, timeout_seconds);
  if (!modem) return modem.error();
  modem->watch(interrupt_fd);
  auto answer = call_to_end(*modem, *command, timeout_seconds);
  if (!answer) return answer.error();
  printer.modem_answer(command->value("command", "?"), *answer);
  return answer->value("ok", false) ? Outcome::success : Outcome::refused;
}

}  // namespace qorextctl
