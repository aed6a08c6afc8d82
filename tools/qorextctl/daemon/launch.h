// SPDX-License-Identifier: Apache-2.0
// The daemon beside a modem and a phone.
#pragma once

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/daemon/private_setup.h"

namespace qorextctl {

// `options` without modem and phone, which are the setup's. Without an executable it is
// qorext_client beside this program.
Result<std::unique_ptr<Daemon>> launch_daemon(DaemonOptions options, const Setup& setup);

}  // namespace qorextctl
