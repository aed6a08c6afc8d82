// SPDX-License-Identifier: Apache-2.0
// The output of the program: aligned lines, or one JSON object per line with stable keys. Results
// go to `out`, logs and errors to `err`. Thread-safe.
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

  void show_hex(bool show) { hex_ = show; }  // below each frame; JSON always has it
  void use_colours(Colours out, Colours err) {
    out_colours_ = out;
    err_colours_ = err;
  }

  void show_personal(bool show) { show_personal_ = show; }  // in logs and unknown bytes
  void show_frames(bool show) { frames_ = show; }           // replies and unsolicited frames

  // Hides the line during output; null: there is none.
  void share_screen_with(InputLine* line);

  // `second`: the second of two replies to one request.
  void reply(const DecodedFrame& reply, bool second);
  // A reply that arrived after its timeout.
  void late_reply(const DecodedFrame& reply);
  void unsolicited(const DecodedFrame& message);
  // A frame that is decoded from input, not exchanged.
  void decoded(FrameKind kind, const DecodedFrame& frame);
  // A line of a log, and the decoded content below it.
  void log_entry(const std::string& line, const std::optional<LogContent>& content);
  void daemon_exit(const ExitStatus& status);
  void property(const std::string& name, const std::string& value);
  void phone(const std::string& root, const Items& report);
  void modem_answer(const std::string& command, const Json& answer);
  // Prints the object as JSON, or else the text.
  void result(const Json& object, const std::string& text);
  // Prints each object as JSON, or else the lines.
  void results(const std::vector<Json>& objects, const std::string& lines);
  void request_list(const std::vector<const Request*>& requests);
  void help(const std::string& text);
  void error(const Error& error);
  // Returns bytes of unknown content as hex for an error message, masked if they may be personal.
  std::string unknown_bytes(View bytes) const;
  // A line of the daemon's log. Call it with all lines in order: masking depends on earlier lines.
  void log_line(const std::string& line);
  // The last lines of a log, printed after a failure.
  void log_tail(const std::string& title, const std::vector<std::string>& lines);

 private:
  std::string summary(const DecodedFrame& frame, std::string_view remark, bool is_reply) const;
  std::string status_text(const DecodedFrame& frame, bool is_reply) const;
  std::string frame_text(const std::string& title, const DecodedFrame& frame) const;
  std::string shown_line(LogReader& reader, const std::string& line) const;
  void reply(const DecodedFrame& reply, std::string_view remark, const char* key, bool value);
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
