// SPDX-License-Identifier: Apache-2.0
// Starts the daemon and exchanges frames with it in the way its parent does.
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
  size_t max_log_lines = SIZE_MAX;  // kept for log()
  int log = -1;                     // a descriptor for the log; -1: it is captured
};

class Daemon {
 public:
  // Returns as soon as the process runs. The daemon replies after it has found the modem.
  static Result<std::unique_ptr<Daemon>> start(const DaemonOptions& options);
  // Closes the request pipe, waits for the daemon to end, then terminates it.
  ~Daemon();

  // Waits until the daemon has read the last request or has ended. Returns false at the deadline.
  // Two requests in one read are one request to the daemon.
  bool wait_taken(Deadline deadline) const;

  // Sends one request with one write. Returns false if the daemon has ended.
  bool send(View request);
  std::optional<Bytes> receive_reply(ReplyForm form, Deadline deadline);
  std::optional<Bytes> receive_unsolicited(Deadline deadline);

  // For callers that wait for several pipes.
  FramePipe& replies() { return replies_; }
  FramePipe& unsolicited() { return unsolicited_; }

  // The daemon ends when its request pipe is closed.
  void close_requests() { requests_.reset(); }
  std::optional<ExitStatus> wait_exit(Deadline deadline) { return process_.wait(deadline); }

  const LogCapture& log() const { return log_; }
  const Process& process() const { return process_; }

 private:
  struct Ends;
  Daemon(Process process, Ends ends, const DaemonOptions& options);

  LogCapture log_;  // destroyed after the process
  UniqueFd requests_;
  FramePipe replies_;
  FramePipe unsolicited_;
  Process process_;
};

}  // namespace qorextctl
