// SPDX-License-Identifier: Apache-2.0
// The daemon, started and spoken to as its parent does it.
#pragma once

#include <memory>
#include <string>

#include "tools/qorextctl/daemon/channel.h"
#include "tools/qorextctl/daemon/log_capture.h"
#include "tools/qorextctl/daemon/process.h"

namespace qorextctl {

struct DaemonOptions {
  std::string executable;
  std::string modem;       // QOREXT_MODEM: "unix:PATH" or "qrtr"
  std::string phone_root;  // QOREXT_PHONE_ROOT
  unsigned instance = 0;
  LogCapture::Listener on_log = {};
  LogCapture::TimedListener on_timed_log = {};
  size_t most_log_lines = SIZE_MAX;  // kept for log()
  int log = -1;                      // a descriptor that gets the log; -1: it is captured
};

class Daemon {
 public:
  // Returns as soon as it runs; it answers when it has found the modem.
  static Result<std::unique_ptr<Daemon>> start(const DaemonOptions& options);
  // Asks the daemon to end by closing the request pipe, then ends it.
  ~Daemon();

  // Whether the daemon has read what was sent, or has gone; waits for it. A request that is sent
  // before that would be read together with the one in front of it.
  bool wait_taken(Deadline deadline) const;

  // One write, one request. False when the daemon has gone.
  bool send(View request);
  Received receive_reply(ReplyForm form, Deadline deadline);
  Received receive_unsolicited(Deadline deadline);

  // For callers that wait for more than one thing at a time.
  FramePipe& replies() { return replies_; }
  FramePipe& unsolicited() { return unsolicited_; }

  // The daemon ends when it finds its request pipe closed.
  void close_requests() { requests_.reset(); }
  std::optional<ExitStatus> wait_exit(Deadline deadline) { return process_.wait(deadline); }

  const LogCapture& log() const { return log_; }
  const Process& process() const { return process_; }

 private:
  struct Ends;
  Daemon(Process process, Ends ends, const DaemonOptions& options);

  LogCapture log_;  // ends after the process
  UniqueFd requests_;
  FramePipe replies_;
  FramePipe unsolicited_;
  Process process_;
};

}  // namespace qorextctl
