#include "launch.h"

namespace qorextctl {

Result<std::unique_ptr<Daemon>> launch_daemon(const Options& options, const Setup& setup,
                                              LogCapture::Listener on_log,
                                              LogCapture::TimedListener on_timed_log) {
  DaemonOptions launch;
  launch.executable = options.daemon_executable;
  if (launch.executable.empty()) launch.executable = sibling("qorext_client");
  if (launch.executable.empty()) {
    return transport_error("qorext_client is not beside qorextctl; use --daemon-program");
  }
  launch.modem = setup.modem();
  launch.phone_root = setup.phone_root();
  launch.instance = options.instance;
  launch.on_log = std::move(on_log);
  launch.on_timed_log = std::move(on_timed_log);
  return Daemon::start(launch);
}

}  // namespace qorextctl
