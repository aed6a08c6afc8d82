#include "start_daemon.h"

#include <stdexcept>

namespace e2e {

std::unique_ptr<qorextctl::Daemon> start_daemon(const PhoneRoot& phone,
                                                qorextctl::DaemonOptions options) {
  options.executable = phone.program("qorext_client");
  options.modem = "unix:" + phone.modem_socket();
  options.phone_root = phone.folder();
  auto daemon = qorextctl::Daemon::start(options);
  if (!daemon) throw std::runtime_error(daemon.error().message);
  return std::move(*daemon);
}

}  // namespace e2e
