// The daemon as the options want it, beside a modem and a phone.
#pragma once

#include "cli.h"
#include "daemon.h"

namespace qorextctl {

Result<std::unique_ptr<Daemon>> launch_daemon(const Options& options, const Setup& setup,
                                              LogCapture::Listener on_log,
                                              LogCapture::TimedListener on_timed_log = {});

}  // namespace qorextctl
