// SPDX-License-Identifier: Apache-2.0
// A handset whose daemon's insides a test can see.
#pragma once

#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/installation.h"
#include "tests/e2e/support/process_figures.h"

namespace e2e {

class WatchedHandset : public testing::Test {
 protected:
  WatchedHandset() {
    become_radio_user();
    handset.emplace(Handset::off);
    handset->phone().use_programs(installation.programs());
  }

  void start_modem() { handset->start_modem(); }
  // It serves then, and the modem has forgotten the requests of the start-up.
  void start_daemon() {
    handset->start_daemon();
    handset->wait_until_serving();
    handset->modem_requests();
  }

  pid_t pid() { return handset->daemon().process().pid(); }

  Installation installation;
  std::optional<Handset> handset;
};

}  // namespace e2e
