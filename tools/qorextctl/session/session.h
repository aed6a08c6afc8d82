// SPDX-License-Identifier: Apache-2.0
// A session: lines with requests and commands, from a terminal, a script or the command line.
#pragma once

#include <memory>
#include <string>

#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/session/exchange.h"

namespace qorextctl {

class Recorder;

// A line that is not a request.
struct LineCommand {
  const char* name;
  const char* arguments;
  const char* help;
};

// The help for the lines of a session, one per line.
std::string session_lines();

class Session {
 public:
  static std::vector<LineCommand> commands();

  // Starts the setup and the daemon. With a recorder, records all frames and waits until the daemon
  // waits for its first request. Options, printer and recorder must outlive the session.
  static Result<std::unique_ptr<Session>> start(const LaunchOptions& options, Printer& printer,
                                                Recorder* recorder = nullptr);

  // Runs one line: a request such as "NAME key=value...", one of commands(), or a comment.
  Outcome run_line(const std::string& line);

  Outcome send(View request, const Request* named);

  // Like send(), but a failure does not print the logs at the end.
  Outcome exchange(View request, const Request* named) { return exchange_->run(request, named); }

  // Processes unsolicited frames until the deadline.
  void take_until(Deadline deadline) {
    exchange_->wait_until([] { return false; }, deadline);
  }

  // Runs lines from a descriptor until its end or the end of the daemon. Returns the worst outcome.
  Outcome run_lines(int fd);

  // Prints unsolicited frames until the descriptor is readable. Returns false if the daemon has
  // ended or on an interrupt.
  bool wait_input(int fd);

  bool over() const { return exchange_->over(); }

  // Continues after Ctrl-C. Returns false if the session must end.
  bool resume();

  const std::string& control() const { return setup_->control(); }

  // finish() prints no logs for failures before this call.
  void forget_failures() { has_failed_ = false; }

  // Ends the daemon. Prints the end of the logs if a request has failed and the log was not shown.
  Outcome finish(Outcome outcome, bool print_exit);

 private:
  Session(const LaunchOptions& options, Printer& printer, Recorder* recorder)
      : options_(options), printer_(printer), recorder_(recorder) {}
  std::optional<Error> open();
  DaemonOptions daemon_options();
  void record_exchange();
  Outcome finish_recording();
  Outcome report(Error error);
  Outcome note_failure(Outcome outcome);
  Outcome run_whole_lines(std::string& text);
  Outcome run_words(const std::vector<std::string>& words);

  // The lines that are not requests.
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
  Outcome send_to_modem(const std::vector<std::string>& words);

  const LaunchOptions& options_;
  Printer& printer_;
  Recorder* recorder_;
  Interrupts interrupts_;
  std::unique_ptr<Setup> setup_;
  std::unique_ptr<Daemon> daemon_;
  std::optional<Exchange> exchange_;
  bool has_failed_ = false;   // finish() prints the logs
  size_t next_log_line_ = 0;  // after the one that ended the last wait-log
  size_t line_ = 0;           // 0: not reading lines
};

}  // namespace qorextctl
