// SPDX-License-Identifier: Apache-2.0
// The whole of a handset on a workstation, private to a test: the daemon started as its parent
// does it, a simulated modem, the phone's files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/support/daemon_log.h"
#include "tests/e2e/support/modem_process.h"
#include "tests/e2e/support/patience.h"
#include "tests/e2e/support/phone_root.h"
#include "tests/e2e/support/wire.h"
#include "tools/qorextctl/daemon/daemon.h"

namespace e2e {

// What the daemon did with a request until it waited for the next one.
struct Served {
  std::string replies;           // everything written to the reply pipe, as_hex()
  std::vector<std::string> log;  // from "Read ... bytes from pipe" on
};

class Handset {
 public:
  enum Power { on, off };

  // Switched on it serves requests, and the modem has forgotten those of the start-up.
  explicit Handset(Power power = on);
  // That the daemon still runs, and ends with status 0 when its request pipe is closed, is expected
  // (unless the test has ended it already).
  ~Handset();

  PhoneRoot& phone() { return phone_; }
  const PhoneRoot& phone() const { return phone_; }

  void start_modem() { modem_.emplace(phone_); }
  void kill_modem();
  ModemProcess& modem() { return *modem_; }
  std::vector<std::string> modem_requests() { return modem_->requests(); }
  // Spoils one request with this name, after `spared` others with the same name. The fault is one
  // of the modem's, such as "error error=3".
  void spoil(const std::string& message, const std::string& fault, unsigned spared = 0);

  // Also again, when the one before has ended.
  void start_daemon(unsigned instance = 0);
  // The log up to the first "Child process waiting for data"; that it comes is expected.
  std::vector<std::string> wait_until_serving();
  qorextctl::Daemon& daemon() { return *daemon_; }
  const DaemonLog& log() const { return log_; }

  // One request, and everything that comes of it.
  Served serve(const Bytes& request);
  // The same in two steps. A single write may hold more than one request.
  void send(const Bytes& request);
  Served served();

  // Closes the request pipe. The log behind the last request.
  std::vector<std::string> end_of_file();
  // How the daemon ended; waits for it.
  std::string exit_status();

 private:
  std::vector<std::string> log_until_waiting();

  PhoneRoot phone_;
  DaemonLog log_;
  std::optional<ModemProcess> modem_;
  std::unique_ptr<qorextctl::Daemon> daemon_;
  size_t log_mark_ = 0;  // behind the last message that was handed out
  bool daemon_ended_ = false;
};

// Requests to the modem as modem_requests() shows them.
std::string element_read(uint32_t rde_id, uint32_t record = 0, uint32_t offset = 0);
std::string element_write(uint32_t rde_id, const Bytes& data, uint32_t record = 0,
                          uint32_t offset = 0);

}  // namespace e2e
