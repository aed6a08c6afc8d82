// Lines of requests, from a person, a script or the command line.
#pragma once

#include <memory>
#include <string>

#include "cli.h"
#include "exchange.h"
#include "interrupts.h"
#include "private_setup.h"

namespace qorextctl {

class Recorder;

class Session {
 public:
  // Starts what `options` ask for, and has it recorded where there is a recorder; then the daemon
  // has come to its first wait for a request. Printer and recorder must outlive the session.
  static Result<std::unique_ptr<Session>> start(const Options& options, Printer& printer,
                                                Recorder* recorder = nullptr);

  // One line: "NAME key=value...", "raw HEX", "modem ...", "wait-unsol [N] [SECONDS]",
  // "wait-property NAME VALUE [SECONDS]", "wait-log TEXT [N] [SECONDS]", "phone show",
  // "expect-failure" before one of the others, a comment.
  // Words in quotes may hold blanks.
  Outcome run_line(const std::string& line);

  Outcome send(View request, const Request* named);

  // Lines from a descriptor until its end, or until the daemon has gone. The worst outcome.
  Outcome run_lines(int fd);

  // Ends the daemon; shows the log's end when a request has failed, unless the log is shown anyway.
  Outcome finish(Outcome outcome, bool print_exit);

 private:
  Session(const Options& options, Printer& printer, Recorder* recorder)
      : options_(options), printer_(printer), recorder_(recorder) {}
  std::optional<Error> open();
  void record_exchange();
  Outcome finish_recording();
  Outcome complain(Error error);
  Outcome judged(Outcome outcome);
  Outcome run_words(const std::vector<std::string>& words);
  Outcome expect_failure(const std::vector<std::string>& words);
  Outcome wait_unsolicited(const std::vector<std::string>& words);
  Outcome wait_property(const std::vector<std::string>& words);
  Outcome wait_log(const std::vector<std::string>& words);
  Outcome show_phone(const std::vector<std::string>& words);
  Outcome ask_modem(const std::vector<std::string>& words);
  Outcome run_whole_lines(std::string& text);

  const Options& options_;
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

// A line's words; nothing when a quote is not closed.
std::optional<std::vector<std::string>> split_line(const std::string& line);

// Asks the modem and prints its answer; an error is left to the caller to print.
Result<Outcome> run_modem(std::span<const std::string> words, const std::string& control,
                          double timeout_seconds, Printer& printer);

}  // namespace qorextctl
