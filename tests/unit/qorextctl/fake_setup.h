// SPDX-License-Identifier: Apache-2.0
// Tests with the fake daemon.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

inline Deadline soon() { return Deadline::in_seconds(10); }

class WithFakeDaemon : public testing::Test {
 protected:
  void TearDown() override { unsetenv("FAKE_DAEMON"); }

  // Sets the mode of the next daemon, a row of the table in fake_daemon.cpp.
  static void set_mode(const char* mode) { setenv("FAKE_DAEMON", mode, 1); }

  static DaemonOptions options() {
    return {.executable = FAKE_DAEMON,
            .modem = "unix:/m",
            .phone_root = "/root/of/phone",
            .instance = 2,
            .on_log = {}};
  }

  static std::unique_ptr<Daemon> start(const char* mode) {
    set_mode(mode);
    auto daemon = Daemon::start(options());
    EXPECT_TRUE(daemon) << daemon.error().message;
    return daemon ? std::move(*daemon) : nullptr;
  }

  std::ostringstream out_;
  std::ostringstream err_;
  Printer printer_{out_, err_, false};
};

}  // namespace qorextctl
