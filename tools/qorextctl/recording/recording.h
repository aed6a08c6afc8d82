// SPDX-License-Identifier: Apache-2.0
// A run of the daemon as a file: frames, messages of the modem and log lines. docs/recordings.md
// describes the format.
#pragma once

#include <fstream>
#include <variant>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/daemon/process.h"
#include "tools/qorextctl/log/log_reader.h"
#include "tools/qorextctl/recording/conversation.h"

namespace qorextctl {

constexpr int kRecordingVersion = 1;

// The "type" of the head and of the events.
constexpr const char* kHead = "recording";
constexpr const char* kFrame = "frame";
constexpr const char* kMessage = "message";
constexpr const char* kService = "service";
constexpr const char* kLog = "log";
constexpr const char* kExit = "exit";

struct FrameEvent {
  FrameKind kind;
  Bytes bytes;
};
struct MessageEvent {
  std::string service;
  uint64_t client;  // as the modem numbers them
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
  Json masked = nullptr;  // the file's object when its bytes are masked; `what` then has none
};

struct Recording {
  unsigned instance = 0;  // of the daemon
  bool masked = false;
  std::string started;             // UTC, ISO 8601
  std::vector<Event> events = {};  // in order of time
};

// Converts events to the objects of the file. Call it in the order of the events.
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
  FrameReader frames_;
  MessageReader messages_;
  LogReader log_;
};

// Creates a file to write to; only the owner can read a private one. `verb` begins the error.
Result<std::ofstream> create_file(const std::string& verb, const std::string& path,
                                  bool is_private);

// Returns false when the file cannot be written.
bool write_recording(const Recording& recording, std::ostream& file);

// Returns a `usage` error with the line number for a file that is not a recording of this version.
Result<Recording> read_recording(const std::string& path);
// The same for an open file; errors begin with `name`.
Result<Recording> read_recording(std::istream& file, const std::string& name);

// Returns the first event whose bytes are masked, or null.
const Event* first_masked(const Recording& recording);

}  // namespace qorextctl
