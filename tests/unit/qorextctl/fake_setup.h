// SPDX-License-Identifier: Apache-2.0
// Tests that start the fake daemon.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

class WithFakeDaemon : public testing::Test {
 protected:
  void TearDown() override { unsetenv("FAKE_DAEMON"); }

  // How the next daemon behaves.
  static void behave(const char* mode) { setenv("FAKE_DAEMON", mode, 1); }

  static DaemonOptions options() {
    return {.executable = FAKE_DAEMON,
            .modem = "unix:/m",
            .phone_root = "/root/of/phone",
            .instance = 2,
            .on_log = {}};
  }

  static std::unique_ptr<Daemon> start(const char* mode) {
    behave(mode);
    auto daemon = Daemon::start(options());
    EXPECT_TRUE(daemon) << daemon.error().message;
    return daemon ? std::move(*daemon) : nullptr;
  }

  std::ostringstream out_;
  std::ostringstream err_;
  Printer printer_{out_, err_, false};
};

}  // namespace qorextctl
