// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/session.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/recording/recorder.h"

namespace qorextctl {

Result<std::unique_ptr<Session>> Session::start(const LaunchOptions& options, Printer& printer,
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
  auto daemon = launch_daemon(daemon_options(), *setup_);
  if (!daemon) return daemon.error();
  daemon_ = std::move(*daemon);
  exchange_.emplace(*daemon_, printer_, options_.timeout, interrupts_.fd());
  if (recorder_) record_exchange();
  return std::nullopt;
}

DaemonOptions Session::daemon_options() {
  DaemonOptions wanted;
  wanted.executable = options_.daemon_executable;
  wanted.instance = options_.instance;
  if (options_.log) wanted.on_log = [this](const std::string& line) { printer_.log_line(line); };
  if (recorder_) {
    wanted.on_timed_log = [this](const std::string& line, int64_t time) {
      recorder_->add_log(line, time);
    };
  }
  return wanted;
}

// Everything that the daemon does on its own is recorded before the first request.
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
  return error ? report(*error) : Outcome::success;
}

Outcome Session::report(Error error) {
  if (line_ != 0) error.message = fmt::format("line {}: {}", line_, error.message);
  printer_.error(error);
  return error.outcome;
}

Outcome Session::note_failure(Outcome outcome) {
  has_failed_ = has_failed_ || outcome != Outcome::success;
  return outcome;
}

Outcome Session::send(View request, const Request* named) {
  return note_failure(exchange_->run(request, named));
}

Outcome Session::run_line(const std::string& line) {
  auto words = split_line(line);
  if (!words) return report(usage_error("a quote is not closed"));
  return words->empty() ? Outcome::success : run_words(*words);
}

// Runs the complete lines in `text` and removes them.
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
  outcome = std::max(outcome, note_failure(exchange_->finish(print_exit)));
  if (recorder_) outcome = std::max(outcome, finish_recording());
  if (!has_failed_ || options_.log) return outcome;
  daemon_->log().wait_end(Deadline::in_seconds(options_.timeout));
  printer_.log_tail("the daemon's log", daemon_->log().lines());
  printer_.log_tail("the modem's log", setup_->modem_log().lines());
  return outcome;
}

}  // namespace qorextctl
