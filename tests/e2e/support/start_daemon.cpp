// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/start_daemon.h"

#include <stdexcept>

namespace e2e {

std::unique_ptr<qorextctl::Daemon> start_daemon(const PhoneRoot& phone,
                                                qorextctl::DaemonOptions options) {
  options.executable = phone.program("qorext_client");
  if (options.modem.empty()) options.modem = phone.modem();
  options.phone_root = phone.daemon_root();
  auto daemon = qorextctl::Daemon::start(options);
  if (!daemon) throw std::runtime_error(daemon.error().message);
  return std::move(*daemon);
}

}  // namespace e2e
