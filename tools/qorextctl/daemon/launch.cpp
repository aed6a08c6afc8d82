// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/launch.h"

namespace qorextctl {

Result<std::unique_ptr<Daemon>> launch_daemon(DaemonOptions options, const Setup& setup) {
  if (options.executable.empty()) options.executable = sibling("qorext_client");
  if (options.executable.empty()) {
    return transport_error("qorext_client is not beside qorextctl; use --daemon-program");
  }
  options.modem = setup.modem();
  options.phone_root = setup.phone_root();
  return Daemon::start(options);
}

}  // namespace qorextctl
