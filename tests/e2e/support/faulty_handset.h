// SPDX-License-Identifier: Apache-2.0
// Handsets whose daemon a test can inspect with the kernel's figures, and inject faults into.
#pragma once

#include "tests/e2e/faulty/switches.h"
#include "tests/e2e/support/handset_fixture.h"
#include "tests/e2e/support/process_figures.h"

namespace e2e {

// The kernel shows the details of a process that has changed its user only to privileged ones.
// A test that needs them becomes the radio user before it starts the daemon, which then keeps its
// user. Does nothing if the test does not run as root.
void become_radio_user();

// Copies of the executables and libraries that every user can run. Must be created before
// become_radio_user(): the build's folders can be closed to other users.
class Installation {
 public:
  Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
  ~Installation();

  std::string programs() const { return path_ + "/bin"; }

 private:
  std::string path_;
};

// A handset of the radio user, switched off.
class InspectedHandset : public testing::Test {
 protected:
  InspectedHandset() { handset.phone().use_programs(installation.programs()); }

  // Starts the daemon until it serves, and clears the modem's list of requests.
  void start_daemon() {
    handset.start_serving();
    handset.modem_requests();
  }
  pid_t pid() { return handset.pid(); }

  Installation installation;
  struct RadioUser {
    RadioUser() { become_radio_user(); }
  } user;
  Handset handset{Handset::off};
};

// The test's mapping of the switches in faulty/switches.h.
class FaultSwitches {
 public:
  FaultSwitches();
  FaultSwitches(const FaultSwitches&) = delete;
  FaultSwitches& operator=(const FaultSwitches&) = delete;
  ~FaultSwitches();

  // While it exists, every program that is started preloads the library with the switches.
  class Preload {
   public:
    Preload(const FaultSwitches& switches, const std::string& library);
    Preload(const Preload&) = delete;
    Preload& operator=(const Preload&) = delete;
    ~Preload();
  };

  Switches* operator->() { return switches_; }

 private:
  std::string path_;
  Switches* switches_;
};

class FaultyHandset : public InspectedHandset {
 protected:
  FaultyHandset();

  // Sets the limit of open descriptors so that the daemon cannot open another one, or resets it.
  void exhaust_descriptors(bool exhausted);

  // Uploads a complete package of one packet.
  void upload_package(uint8_t package);

  Bytes band_query = cdma(0x020000B0);
  std::string band_reply = as_hex(reply(0x020000B0, 0, le32(1)));

  FaultSwitches switches;
};

}  // namespace e2e
