// SPDX-License-Identifier: Apache-2.0
// The daemon of a replay, its phone, and a modem that does what the replay wants.
#pragma once

#include <climits>
#include <functional>

#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/replay/replay_modem.h"

namespace qorextctl {

class ReplayStage {
 public:
  // `on_request` gets every request to the modem, from within wait().
  using OnRequest = std::function<void(const ReplayModem::Request&)>;
  static Result<std::unique_ptr<ReplayStage>> start(const LaunchOptions& options, Printer& printer,
                                                    OnRequest on_request);

  // Until `done` says so (true), or until the time has passed, the daemon has ended or the user
  // wants an end. `done` is asked whenever something happens, and every `most_ms`. Where nothing
  // has happened for the time, the next wait is over at once.
  bool wait(const std::function<bool()>& done, int most_ms = INT_MAX);
  // The time begins anew: the daemon has something to do.
  void note_activity() { quiet_ = Deadline::in_seconds(seconds_); }

  ReplayModem& modem() { return *modem_; }
  Daemon& daemon() { return *daemon_; }
  bool has_ended() const { return daemon_->replies().ended() && daemon_->unsolicited().ended(); }
  // How; waits for it.
  std::string end();
  bool is_interrupted() const { return interrupted_; }

 private:
  ReplayStage(double seconds, OnRequest on_request)
      : seconds_(seconds), on_request_(std::move(on_request)) {}
  std::optional<Error> open(const LaunchOptions& options, Printer& printer);

  double seconds_;
  OnRequest on_request_;
  Interrupts interrupts_;
  std::unique_ptr<Setup> setup_;
  std::unique_ptr<ReplayModem> modem_;
  std::unique_ptr<Daemon> daemon_;
  Deadline quiet_ = Deadline::in_seconds(0);
  bool interrupted_ = false;
};

}  // namespace qorextctl
