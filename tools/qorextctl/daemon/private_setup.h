// SPDX-License-Identifier: Apache-2.0
// The modem and the phone root that the daemon runs with. Those that are not given are private:
// created for this run in a temporary folder, and removed afterwards.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/qorextctl/daemon/daemon.h"

namespace qorextctl {

struct SetupOptions {
  std::string modem = {};        // "unix:PATH" or "qrtr"; empty: private
  std::string control;           // control socket of the given modem; empty: none
  std::string scenario;          // file for the private modem; empty: its default
  std::string phone_root;        // empty: private
  std::string modem_executable;  // empty: qorext_modem in this program's folder
  double timeout_seconds = 20;
  bool serves_modem = false;  // the caller serves the private modem's socket: none is started
};

// What a command that starts the daemon sets.
struct LaunchOptions {
  std::string daemon_executable;  // empty: qorext_client in this program's folder
  unsigned instance = 0;
  double timeout = kDefaultTimeoutSeconds;
  bool log = false;  // prints the daemon's log
  SetupOptions setup;
};

class Setup {
 public:
  // A readable `interrupt_fd` ends the wait for the private modem with an error.
  static Result<std::unique_ptr<Setup>> create(const SetupOptions& options, int interrupt_fd = -1);
  ~Setup();

  const std::string& modem() const { return modem_; }
  std::string modem_socket() const { return folder_ + "/modem.sock"; }  // of the private modem
  const std::string& control() const { return control_; }               // empty: unknown
  const std::string& phone_root() const { return phone_root_; }
  const LogCapture& modem_log() const { return modem_log_; }

 private:
  Setup(const SetupOptions& options, int interrupt_fd)
      : interrupt_fd_(interrupt_fd),
        modem_(options.modem),
        control_(options.control),
        phone_root_(options.phone_root) {}

  std::optional<Error> make_folder();
  std::optional<Error> make_phone_root();
  std::optional<Error> start_modem(const SetupOptions& options);
  std::optional<Error> wait_ready(const UniqueFd& ready, double seconds);

  int interrupt_fd_;
  std::string folder_;  // empty: nothing is private
  std::string modem_;
  std::string control_;
  std::string phone_root_;
  LogCapture modem_log_;  // destroyed after the process
  std::optional<Process> process_;
};

// Starts the daemon with the setup's modem and phone root, which replace those in `options`. An
// empty executable is qorext_client in this program's folder.
Result<std::unique_ptr<Daemon>> launch_daemon(DaemonOptions options, const Setup& setup);

}  // namespace qorextctl
