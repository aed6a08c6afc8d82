// SPDX-License-Identifier: Apache-2.0
// What went over the daemon's pipes and to and from its modem, and what it logged, as one file:
// docs/recordings.md describes it.
#pragma once

#include <iosfwd>
#include <variant>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/daemon/process.h"
#include "tools/qorextctl/log/log_reader.h"
#include "tools/qorextctl/recording/conversation.h"
#include "tools/qorextctl/recording/qmi_message.h"

namespace qorextctl {

struct FrameEvent {
  FrameKind kind;
  Bytes bytes;
};
struct MessageEvent {
  std::string service;
  uint64_t client;  // one of the modem's
  Bytes packet;
};
struct ServiceEvent {
  std::string name;
  bool is_up;
};
struct LogEvent {
  std::string line;
};

struct Event {
  int64_t time;  // nanoseconds from the recording's start
  std::variant<FrameEvent, MessageEvent, ServiceEvent, LogEvent, ExitStatus> what;
  size_t line = 0;        // of the file
  Json masked = nullptr;  // the file's object, where that does not tell the bytes; they are empty
};

struct Recording {
  unsigned instance = 0;  // of the daemon
  bool masked = false;
  std::string started;             // UTC, as ISO 8601 writes it
  std::vector<Event> events = {};  // in the order of their times
};

// Events as objects, as they stand in the file. Takes them in their order.
class EventText {
 public:
  explicit EventText(bool show_personal) : show_personal_(show_personal) {}
  Json show(const Event& event);

 private:
  Json members(const FrameEvent& frame);
  Json members(const MessageEvent& message);
  Json members(const ServiceEvent& service) const;
  Json members(const LogEvent& log);
  Json members(const ExitStatus& status) const;

  bool show_personal_;
  Conversation conversation_;
  QmiReader messages_;
  LogReader log_;
};

// False when the file cannot be written.
bool write_recording(const Recording& recording, std::ostream& file);

// A file that is no recording, or not of this version, is a `usage` error that names the line.
Result<Recording> read_recording(const std::string& path);
// The same of a file that is open; `name` stands in front of what is wrong.
Result<Recording> read_recording(std::istream& file, const std::string& name);

// The first event whose bytes are masked; null when there is none.
const Event* first_masked(const Recording& recording);

}  // namespace qorextctl
