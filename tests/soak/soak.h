// SPDX-License-Identifier: Apache-2.0
// One daemon serves requests for as long as is wanted, while its modem misbehaves now and then and
// reports by itself. Every reply and every unsolicited message is checked, and so is what the two
// processes need of the system.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "tests/e2e/support/installation.h"
#include "tests/e2e/support/modem_process.h"
#include "tests/e2e/support/phone_root.h"
#include "tests/soak/families.h"
#include "tests/soak/process_watch.h"
#include "tests/soak/reports.h"
#include "tools/qorextctl/daemon/daemon.h"

namespace soak {

struct Options {
  uint32_t requests = 1000000;
  uint32_t indications = 100000;
  uint32_t seed = 1;
};

class Soak {
 public:
  explicit Soak(const Options& options);

  // Stops at the first thing that is wrong.
  void run();
  void report() const;

 private:
  using Clock = std::chrono::steady_clock;

  void serve_one();
  void spoil_some(const Family& family);
  void tell_spoiling();
  void report_some();
  void exchange(const Family& family, const Case& one);

  // Reads what has come on the parent's pipes; waits for something until the deadline.
  void read_pipes(qorextctl::Deadline deadline);
  void check_messages();
  void take_message(const Bytes& message);
  // Until no more messages than these are still to come.
  void wait_for_messages(size_t most);
  // Until all indications have been acted on.
  void wait_until_idle();

  void look_at_processes();
  void check_end();
  // All KPI packages that the daemon has stored.
  Bytes current_log() const;
  void show_progress();

  Options options_;
  Draws draws_;
  ModemModel model_;
  Parent parent_;
  Bytes requested_table_;
  uint32_t owed_tables_ = 0;

  e2e::Installation installation_;
  std::optional<e2e::PhoneRoot> phone_;
  std::unique_ptr<e2e::ModemProcess> modem_;
  std::unique_ptr<qorextctl::Daemon> daemon_;

  uint32_t served_ = 0;
  uint32_t indicated_ = 0;
  std::map<std::string, uint32_t> families_;
  std::map<std::string, uint32_t> spoilings_;
  std::map<std::string, uint32_t> reports_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_shown_ = start_;

  ProcessWatch daemon_watch_{"daemon", 512};
  ProcessWatch modem_watch_{"modem", 4096};
};

}  // namespace soak
