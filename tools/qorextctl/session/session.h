// SPDX-License-Identifier: Apache-2.0
// Lines of requests, from a person, a script or the command line.
#pragma once

#include <memory>
#include <string>

#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/session/exchange.h"

namespace qorextctl {

class Recorder;

// A line that is no request.
struct LineCommand {
  const char* name;
  const char* arguments;
  const char* help;
};

// The lines that are not requests, each with its arguments and help.
std::string session_lines();

class Session {
 public:
  static std::vector<LineCommand> commands();

  // Starts what `options` ask for, and has it recorded where there is a recorder; then the daemon
  // has come to its first wait for a request. Printer and recorder must outlive the session.
  static Result<std::unique_ptr<Session>> start(const LaunchOptions& options, Printer& printer,
                                                Recorder* recorder = nullptr);

  // One line: "NAME key=value..." is a request; one of commands(); a comment.
  Outcome run_line(const std::string& line);

  Outcome send(View request, const Request* named);

  // The same, but a failure is no reason to show the log at the end.
  Outcome exchange(View request, const Request* named) { return exchange_->run(request, named); }

  // Takes what comes without being asked for, until the deadline.
  void take_until(Deadline deadline) {
    exchange_->wait_until([] { return false; }, deadline);
  }

  // Lines from a descriptor until its end, or until the daemon has gone. The worst outcome.
  Outcome run_lines(int fd);

  // Prints what comes without being asked for, until the descriptor is readable (true), or until
  // the daemon has gone or the user wants an end.
  bool wait_input(int fd);

  bool over() const { return exchange_->over(); }

  // Goes on, also after a Ctrl-C, which ends no more than one wait. False: it is to end.
  bool resume();

  const std::string& control() const { return setup_->control(); }

  // For a person, who was told at once: finish() shows no log because of what has failed before.
  void forget_failures() { daemon_failed_ = false; }

  // Ends the daemon; shows the log's end when a request has failed, unless the log is shown anyway.
  Outcome finish(Outcome outcome, bool print_exit);

 private:
  Session(const LaunchOptions& options, Printer& printer, Recorder* recorder)
      : options_(options), printer_(printer), recorder_(recorder) {}
  std::optional<Error> open();
  DaemonOptions wanted_daemon();
  void record_exchange();
  Outcome finish_recording();
  Outcome complain(Error error);
  Outcome judged(Outcome outcome);
  Outcome run_whole_lines(std::string& text);
  Outcome run_words(const std::vector<std::string>& words);

  // The lines that are no requests.
  struct Line;
  static const Line kLines[];
  Outcome send_raw(const std::vector<std::string>& words);
  Outcome help(const std::vector<std::string>& words);
  Outcome expect_failure(const std::vector<std::string>& words);
  Outcome wait_unsolicited(const std::vector<std::string>& words);
  Outcome wait_property(const std::vector<std::string>& words);
  Outcome wait_log(const std::vector<std::string>& words);
  bool find_in_log(const std::string& text, Deadline deadline);
  Outcome show_phone(const std::vector<std::string>& words);
  Outcome tell_modem(const std::vector<std::string>& words);

  const LaunchOptions& options_;
  Printer& printer_;
  Recorder* recorder_;
  Interrupts interrupts_;
  std::unique_ptr<Setup> setup_;
  std::unique_ptr<Daemon> daemon_;
  std::optional<Exchange> exchange_;
  bool daemon_failed_ = false;  // in a way that its log may explain
  size_t next_log_line_ = 0;    // behind the one that ended the last wait-log
  size_t line_ = 0;             // 0: not reading lines
};

}  // namespace qorextctl
