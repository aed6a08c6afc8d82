// SPDX-License-Identifier: Apache-2.0
// What the program prints: aligned lines for people, or one JSON object a line with stable keys.
// Results go to standard output; logs and errors to standard error. Any thread may print.
#pragma once

#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/daemon/process.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/log/log_reader.h"
#include "tools/qorextctl/output/terminal.h"

namespace qorextctl {

class Printer {
 public:
  Printer(std::ostream& out, std::ostream& err, bool json) : out_(out), err_(err), json_(json) {}

  void show_hex(bool show) { hex_ = show; }  // below every frame; JSON always has it
  void use_colours(Colours out, Colours err) {
    out_colours_ = out;
    err_colours_ = err;
  }

  void show_personal(bool show) { show_personal_ = show; }  // in the daemon's log
  void show_frames(bool show) { frames_ = show; }           // replies and unsolicited ones

  // What is typed meanwhile makes room for what is printed; null: nothing is.
  void share_screen_with(InputLine* line);

  // `second`: the reply that follows the real one.
  void reply(const DecodedFrame& reply, bool second);
  // Of a request whose wait has ended before.
  void late_reply(const DecodedFrame& reply);
  void unsolicited(const DecodedFrame& message);
  // A frame that was given, not exchanged.
  void decoded(FrameKind kind, const DecodedFrame& frame);
  // A line of a log, and below it what it holds.
  void log_entry(const std::string& line, const std::optional<LogContent>& content);
  void daemon_exit(const ExitStatus& status);
  void property(const std::string& name, const std::string& value);
  void phone(const std::string& root, const Items& report);
  void modem_answer(const std::string& command, const Json& answer);
  // One result: the object where JSON is wanted, else the text.
  void result(const Json& object, const std::string& text);
  // Several, an object each, and the lines that show them to people.
  void results(const std::vector<Json>& objects, const std::string& lines);
  void request_list(const std::vector<const Request*>& requests);
  void help(const std::string& text);
  void error(const Error& error);
  // As hex, for an error: bytes of which nothing is known.
  std::string unknown_bytes(View bytes) const;
  // Of the daemon's log; its lines in their order.
  void log_line(const std::string& line);
  // The end of a log, for a person who asks why something failed.
  void log_tail(const std::string& title, const std::vector<std::string>& lines);

 private:
  std::string summary(const DecodedFrame& frame, std::string_view remark, bool is_reply) const;
  std::string status_text(const DecodedFrame& frame, bool is_reply) const;
  std::string frame_text(const std::string& title, const DecodedFrame& frame) const;
  std::string shown_line(LogReader& reader, const std::string& line) const;
  void frame(const std::string& title, const DecodedFrame& frame);
  void object(const Json& object);
  void text(const std::string& text);
  void write(std::ostream& stream, const std::string& text);

  std::ostream& out_;
  std::ostream& err_;
  bool json_;
  bool hex_ = false;
  bool show_personal_ = false;
  bool frames_ = true;
  Colours out_colours_;
  Colours err_colours_;
  InputLine* input_line_ = nullptr;
  LogReader log_reader_;
  std::mutex mutex_;
};

}  // namespace qorextctl
