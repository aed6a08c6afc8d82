// SPDX-License-Identifier: Apache-2.0
// Sends requests to a running daemon, and decodes and prints replies and unsolicited frames.
#pragma once

#include <functional>

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Called for every frame, before it is sent or after it is received.
using FrameListener = std::function<void(FrameKind kind, View frame)>;

class Exchange {
 public:
  // A readable `interrupt_fd` ends all waits.
  Exchange(Daemon& daemon, Printer& printer, double timeout_seconds, int interrupt_fd = -1)
      : daemon_(daemon),
        printer_(printer),
        timeout_(timeout_seconds),
        interrupt_fd_(interrupt_fd) {}

  void listen(FrameListener listener) { listener_ = std::move(listener); }

  // Sends one request and waits for its replies. Prints them, and unsolicited frames that arrive
  // meanwhile.
  Outcome run(View request, const Request* named);

  // Prints the unsolicited frames that have arrived, without waiting.
  void print_unsolicited();

  // Waits until `count` unsolicited frames have arrived that earlier calls have not counted.
  Outcome wait_unsolicited(size_t count, double seconds);

  // Prints unsolicited frames until the descriptor is readable or the daemon has ended.
  void wait_readable(int fd);

  // Prints frames until `done` returns true. Returns false at the deadline, when the daemon has
  // ended, or on an interrupt.
  bool wait_until(const std::function<bool()>& done, Deadline deadline);

  // Closes the request pipe, prints the remaining frames, and reports how the daemon ended.
  Outcome finish(bool print_exit);

  // Whether the daemon has ended or an interrupt is pending.
  bool over() const { return interrupted_ || daemon_.replies().ended(); }

  // resume() continues after an interrupt, which then ends no more than one wait.
  bool interrupted() const { return interrupted_; }
  void resume() { interrupted_ = false; }

 private:
  // Returns nothing, after printing an error, if there is no reply.
  std::optional<DecodedFrame> receive(const Expected& expected, bool second, Deadline deadline);
  void notify(FrameKind kind, View frame) const {
    if (listener_) listener_(kind, frame);
  }
  void report_no_reply(const Expected& expected, bool second);
  void expect_late(const Expected& expected, bool second);
  void print_late();
  void drop_flood();
  void report_unexpected();
  template <class Done>
  bool pump(Done done, int extra_fd, const Deadline* deadline, int max_ms = -1);

  Daemon& daemon_;
  Printer& printer_;
  double timeout_;
  int interrupt_fd_;
  FrameListener listener_;
  bool interrupted_ = false;
  size_t unsolicited_ = 0;        // frames that wait_unsolicited() has not counted
  std::optional<Expected> late_;  // the last reply that timed out
  size_t dropped_ = 0;            // bytes of the reply pipe, not reported yet
  Bytes first_dropped_;
};

}  // namespace qorextctl
