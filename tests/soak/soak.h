// SPDX-License-Identifier: Apache-2.0
// One run of the daemon with random requests, modem faults and indications. Checks every reply,
// every unsolicited message and the resources of both processes.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "tests/e2e/support/faulty_handset.h"
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

  // Stops at the first failure.
  void run();
  void report() const;

 private:
  using Clock = std::chrono::steady_clock;

  void serve_one();
  void inject_some(const Family& family);
  void send_faults();
  void indicate_some();
  void exchange(const Family& family, const Case& one);

  // Waits for data on the parent's pipes until the deadline, and reads it.
  void read_pipes(qorextctl::Deadline deadline);
  void check_messages();
  void take_message(const Bytes& message);
  // Waits until at most this number of messages is outstanding.
  void wait_for_messages(size_t max_outstanding);
  // Waits until all indications have been processed.
  void wait_until_idle();

  void sample_processes();
  void check_end();
  // All KPI packages that the daemon has stored.
  Bytes current_log() const;
  void show_progress();

  Options options_;
  Random random_;
  ModemModel model_;
  Parent parent_;
  Bytes requested_table_;
  uint32_t expected_tables_ = 0;

  e2e::Installation installation_;
  std::optional<e2e::PhoneRoot> phone_;
  std::unique_ptr<e2e::ModemProcess> modem_;
  std::unique_ptr<qorextctl::Daemon> daemon_;

  uint32_t served_ = 0;
  uint32_t indicated_ = 0;
  std::map<std::string, uint32_t> families_;
  std::map<std::string, uint32_t> faults_;
  std::map<std::string, uint32_t> reports_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_shown_ = start_;

  ProcessWatch daemon_watch_{"daemon", 512};
  ProcessWatch modem_watch_{"modem", 4096};
};

}  // namespace soak
