// SPDX-License-Identifier: Apache-2.0
// Requests to a running daemon, one after the other: what comes back is decoded and printed as it
// comes.
#pragma once

#include <functional>

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/frames/expected_reply.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Gets every frame: before it is written, after it was read.
using FrameListener = std::function<void(FrameKind kind, View frame)>;

class Exchange {
 public:
  // A readable `interrupt_fd` ends every wait.
  Exchange(Daemon& daemon, Printer& printer, double timeout_seconds, int interrupt_fd = -1)
      : daemon_(daemon),
        printer_(printer),
        timeout_(timeout_seconds),
        interrupt_fd_(interrupt_fd) {}

  void listen(FrameListener listener) { listener_ = std::move(listener); }

  // Sends one request and prints its replies, and unsolicited frames that come meanwhile. The next
  // request may follow only then: two requests in one read would be taken as one.
  Outcome run(View request, const Request* named);

  // Prints the unsolicited frames that have come, without waiting.
  void print_unsolicited();

  // Waits until `count` unsolicited frames have come that no earlier wait has counted.
  Outcome wait_unsolicited(size_t count, double seconds);

  // Prints unsolicited frames until the descriptor is readable or the daemon has ended.
  void wait_readable(int fd);

  // Prints what comes until `done` says so. False when the time has passed before, the daemon has
  // ended or the user wants an end.
  bool wait_until(const std::function<bool()>& done, Deadline deadline);

  // Closes the request pipe and prints what is left and how the daemon ended.
  Outcome finish(bool print_exit);

  // The daemon has gone, or the user wants an end.
  bool over() const { return interrupted_ || daemon_.replies().ended(); }

  // Whether the user wants an end; resume() takes it as meant for the wait that it has ended only.
  bool interrupted() const { return interrupted_; }
  void resume() { interrupted_ = false; }

 private:
  // Nothing when no reply came, which is told already.
  std::optional<DecodedFrame> receive(const Expected& expected, bool second, Deadline deadline);
  void tell(FrameKind kind, View frame) const {
    if (listener_) listener_(kind, frame);
  }
  void no_reply(const Expected& expected, bool second);
  void owe(const Expected& expected, bool second);
  void print_late();
  void drop_flood();
  void report_strays();
  template <class Done>
  bool pump(Done done, int extra_fd, const Deadline* deadline, int most_ms = -1);

  Daemon& daemon_;
  Printer& printer_;
  double timeout_;
  int interrupt_fd_;
  FrameListener listener_;
  bool interrupted_ = false;
  size_t unsolicited_ = 0;        // not counted by a wait
  std::optional<Expected> owed_;  // the last one that nobody waits for any more
  size_t dropped_ = 0;            // bytes of the reply pipe, not reported yet
  Bytes first_dropped_;
};

}  // namespace qorextctl
