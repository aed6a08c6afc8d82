// SPDX-License-Identifier: Apache-2.0
// One replay of a recording.
#pragma once

#include <map>
#include <set>

#include "tools/qorextctl/recording/conversation.h"
#include "tools/qorextctl/replay/replay_report.h"
#include "tools/qorextctl/replay/replay_script.h"
#include "tools/qorextctl/replay/replay_stage.h"

namespace qorextctl {

// Goes through a script event by event: sends what the parent sent, answers as the modem did, and
// expects of the daemon what it did then.
class ReplayPlayer {
 public:
  ReplayPlayer(const Recording& recording, bool show_personal, Printer& printer)
      : printer_(printer), script_(recording), report_(printer, show_personal) {}

  std::optional<Error> start(const LaunchOptions& options);
  void run();
  // Tells what is different in all, of the recording that is called `path`.
  Outcome finish(const std::string& path);

 private:
  void play(const FrameEvent& frame, const Event& event);
  void play(const MessageEvent& message, const Event& event);
  void play(const ServiceEvent& service, const Event& event);
  void play(const LogEvent& log, const Event& event);
  void play(const ExitStatus& status, const Event& event);
  void send(const FrameEvent& frame, const Event& event);
  void expect(FramePipe& pipe, const FrameEvent& frame, const Event& event);
  void expect_message(const Event& event);
  void answer(size_t request, size_t response);
  void answer_at_once(size_t request);
  void serve(const ReplayModem::Request& request);
  void end_daemon();
  void take_unexpected_reply();
  template <class Decoded>
  void lacks(const Event& event, const std::string& what, const Decoded& expected);
  Daemon& daemon() { return stage_->daemon(); }
  bool has_answered() { return !daemon().replies().pending().empty(); }

  struct Live {
    uint64_t client;
    uint16_t transaction;
  };

  Printer& printer_;
  ReplayScript script_;
  ReplayReport report_;
  std::unique_ptr<ReplayStage> stage_;
  Conversation conversation_;
  std::map<size_t, Live> live_;  // requests that have come, by event
  std::set<size_t> answered_;    // responses that are sent, by event
  size_t index_ = 0;
  bool over_ = false;  // the daemon has ended before its time
};

}  // namespace qorextctl
