// SPDX-License-Identifier: Apache-2.0
// An emulated handset that one test owns: a daemon started as its parent starts it, a simulated
// modem and the phone's files.
#pragma once

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/support/daemon.h"
#include "tests/e2e/support/modem_process.h"
#include "tests/e2e/support/phone_root.h"
#include "tests/e2e/support/wire.h"

namespace e2e {

// What the daemon did with a request until it waited for the next one.
struct Served {
  std::string replies;  // everything written to the reply pipe, as_hex()
  Texts log;            // from "Read ... bytes from pipe" on
};

class Handset {
 public:
  enum Power { on, off };

  // Switched on, it serves requests, and the modem's list of requests is empty.
  explicit Handset(Power power = on);
  // Expects the daemon to end with status 0 when its request pipe is closed, unless the test has
  // already ended it.
  ~Handset();

  PhoneRoot& phone() { return phone_; }
  const PhoneRoot& phone() const { return phone_; }

  void start_modem() { modem_.emplace(phone_); }
  void kill_modem();
  ModemProcess& modem() { return *modem_; }
  Texts modem_requests() { return modem_->requests(); }
  // Has the modem send an indication, in the words of "qorextctl modem indicate".
  void indicate(const std::string& indication) { modem_->command("indicate " + indication); }
  // Injects a fault of the modem, such as "error error=3", into the next request with this name,
  // or into a later one: the first `unaffected` requests with that name are served as usual.
  void inject(const std::string& message, const std::string& fault, unsigned unaffected = 0);

  // Can be called again after the daemon has ended.
  void start_daemon(unsigned instance = 0);
  // Returns the log up to the next "Child process waiting for data"; throws if it does not come.
  Texts wait_until_serving();
  // Both of the above.
  Texts start_serving(unsigned instance = 0);
  qorextctl::Daemon& daemon() { return *daemon_; }
  pid_t pid() const { return daemon_->process().pid(); }
  const DaemonLog& log() const { return log_; }

  // Sends one request and collects all of its effects.
  Served serve(const Bytes& request);
  // The same in two steps. One write can hold more than one request.
  void send(const Bytes& request);
  Served served();

  std::string next_message() { return e2e::next_message(*daemon_); }
  // Waits until the daemon has processed all indications sent so far. Returns their messages.
  Texts messages_until_idle();

  // Closes the request pipe. Returns the log after the last request.
  Texts end_of_file();
  // Waits for the daemon's end; see exit_status_of().
  std::string exit_status();

 private:
  Texts log_until_waiting();

  PhoneRoot phone_;
  DaemonLog log_;
  std::optional<ModemProcess> modem_;
  std::unique_ptr<qorextctl::Daemon> daemon_;
  size_t log_mark_ = 0;  // the number of messages already returned
  bool daemon_ended_ = false;
};

// Requests to the modem in the form of modem_requests().
std::string element_read(uint32_t rde_id, uint32_t record = 0, uint32_t offset = 0);
std::string element_write(uint32_t rde_id, const Bytes& data, uint32_t record = 0,
                          uint32_t offset = 0);

}  // namespace e2e
