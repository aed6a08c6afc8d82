// SPDX-License-Identifier: Apache-2.0
// A handset whose daemon meets the failures that a test wants.
#pragma once

#include <sys/resource.h>

#include "tests/e2e/support/log_texts.h"
#include "tests/e2e/support/switchboard.h"
#include "tests/e2e/support/watched_handset.h"

namespace e2e {

class FaultyHandset : public WatchedHandset {
 protected:
  FaultyHandset() {
    start_modem();
    Switchboard::Wiring wiring(switches, installation.programs() + "/../lib/libqorext_faulty.so");
    start_daemon();
  }

  // From now on the daemon can open nothing; with `false` it can again.
  void exhaust_descriptors(bool exhausted) {
    rlimit limit{};
    ASSERT_EQ(prlimit(pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
    limit.rlim_cur = exhausted ? lowest_free_descriptor(pid()) : limit.rlim_max;
    ASSERT_EQ(prlimit(pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
  }

  std::string next_message() {
    auto frame = handset->daemon().receive_unsolicited(qorextctl::Deadline::in(kPatience));
    return frame ? as_hex(*frame) : "nothing";
  }
  // What the modem has reported before has been acted on and logged, and has left no message but
  // these.
  std::vector<std::string> messages_until_idle() {
    const std::string last = as_hex(generic_message(hex("00020006"), {}));
    size_t before = handset->log().texts().size();
    handset->modem().command("indicate generic");
    std::vector<std::string> messages;
    for (std::string one = next_message(); one != last; one = next_message()) {
      messages.push_back(one);
      if (one == "nothing") break;
    }
    handset->log().wait_for("Handling unsol msg 22", before, qorextctl::Deadline::in(kPatience));
    return messages;
  }

  // A whole package of one packet, to be stored.
  void report_package(uint8_t package) {
    handset->modem().command(
        fmt::format("indicate utils type=1 data={:02x}0101000800ffffffffa1a2a3a4", package));
  }

  Bytes band_query = cdma(0x020000B0);
  std::string band_reply = as_hex(reply(0x020000B0, 0, le32(1)));

  Switchboard switches;
};

}  // namespace e2e
