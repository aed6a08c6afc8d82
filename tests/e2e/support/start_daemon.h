// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "tests/e2e/support/phone_root.h"
#include "tools/qorextctl/daemon/daemon.h"

namespace e2e {

// The daemon on this phone and, unless the options name another, its modem.
std::unique_ptr<qorextctl::Daemon> start_daemon(const PhoneRoot& phone,
                                                qorextctl::DaemonOptions options);

// For so many requests that their log cannot be kept.
constexpr size_t kLastLogLines = 200;

}  // namespace e2e
