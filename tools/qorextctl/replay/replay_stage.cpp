// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_stage.h"

#include <poll.h>

#include <algorithm>

#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace qorextctl {

Result<std::unique_ptr<ReplayStage>> ReplayStage::start(const LaunchOptions& options,
                                                        Printer& printer, OnRequest on_request) {
  std::unique_ptr<ReplayStage> stage(new ReplayStage(options.timeout, std::move(on_request)));
  if (auto error = stage->open(options, printer)) return *error;
  stage->note_activity();
  return stage;
}

std::optional<Error> ReplayStage::open(const LaunchOptions& options, Printer& printer) {
  SetupOptions given = options.setup;
  given.serves_modem = true;
  auto setup = Setup::create(given, interrupts_.fd());
  if (!setup) return setup.error();
  setup_ = std::move(*setup);
  auto modem = ReplayModem::serve(setup_->modem_socket());
  if (!modem) return modem.error();
  modem_ = std::move(*modem);
  give_to_radio_user(setup_->modem_socket());
  DaemonOptions wanted;
  wanted.executable = options.daemon_executable;
  wanted.instance = options.instance;
  if (options.log) wanted.on_log = [&printer](const std::string& line) { printer.log_line(line); };
  auto daemon = launch_daemon(std::move(wanted), *setup_);
  if (!daemon) return daemon.error();
  daemon_ = std::move(*daemon);
  return std::nullopt;
}

bool ReplayStage::wait(const std::function<bool()>& done, int most_ms) {
  Deadline deadline = Deadline::in_seconds(seconds_);
  for (bool is_late = false;; is_late = deadline.passed()) {
    if (done()) return true;
    if (interrupted_ || has_ended() || is_late) return false;
    pollfd entries[] = {{modem_->fd(), POLLIN, 0},
                        {daemon_->replies().poll_fd(), POLLIN, 0},
                        {daemon_->unsolicited().poll_fd(), POLLIN, 0},
                        {interrupts_.fd(), POLLIN, 0}};
    int left = std::min(deadline.remaining_ms(), quiet_.remaining_ms());
    int ready = poll(entries, std::size(entries), std::min(left, most_ms));
    if (ready == 0 && left == 0) return false;
    if (ready <= 0) continue;
    note_activity();
    if (entries[0].revents != 0) {
      if (auto request = modem_->next()) on_request_(*request);
    }
    if (entries[1].revents != 0) daemon_->replies().read_available();
    if (entries[2].revents != 0) daemon_->unsolicited().read_available();
    interrupted_ = entries[3].revents != 0;
  }
}

std::string ReplayStage::end() {
  auto status = daemon_->wait_exit(Deadline::in_seconds(seconds_));
  return status ? describe(*status) : "none";
}

}  // namespace qorextctl
