// SPDX-License-Identifier: Apache-2.0
// The daemon is killed at each system call with which it stores a log, and started again: no log
// that was complete may be lost, and the next one has to be stored.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/syscall_killer.h"
#include "tests/e2e/support/vorn.h"

namespace e2e {
namespace {

using qorextctl::Deadline;

constexpr long kThreeDays = 3 * 86400;

constexpr char kCurrentLog[] = "vorn_20260102000000.log";
constexpr char kPreviousLog[] = "vorn_20260101000000.log";
constexpr char kStaleFile[] = "vorn_20250101000000.log";

class KilledStore : public testing::Test {
 protected:
  KilledStore() { handset.start_modem(); }

  void start_daemon() {
    handset.start_daemon();
    handset.wait_until_serving();
  }

  // What is indicated behind a packet arrives behind it. False when the daemon has been killed.
  bool survives() {
    handset.modem().command("indicate generic");
    return static_cast<bool>(handset.daemon().receive_unsolicited(Deadline::in(kPatience)));
  }

  // Uploads "new log" as package 7 once for every kKillStep-th system call of its last packet, in
  // the directory that `prepare` makes, and lets `look` look at what is left each time.
  template <class Prepare, class Look>
  void kill_at_each_call(Prepare prepare, Look look) {
    unsigned call = 0;
    bool killed = true;
    while (killed && !HasFailure()) {
      call += kKillStep;
      SCOPED_TRACE(fmt::format("killed at system call {}", call));
      killed = upload_and_kill(call, prepare);
      look(killed);
      if (killed) start_daemon();
      upload_log(handset.modem(), 8, "next log");
      EXPECT_TRUE(survives());
      EXPECT_TRUE(vorn.content(vorn.linked(1)).ends_with("next log"));
      look(false);
      handset.end_of_file();
    }
    RecordProperty("system_calls", static_cast<int>(call));
    EXPECT_GT(call, kFewestCalls);
  }

  template <class Prepare>
  bool upload_and_kill(unsigned call, Prepare prepare) {
    vorn.clear();
    prepare();
    start_daemon();
    upload(handset.modem(), {7, 1, false, le32(kLogHeader) + characters("new ")});
    EXPECT_TRUE(survives());
    SyscallKiller killer(handset.daemon().process().pid(), call);
    upload(handset.modem(), {7, 2, true, characters("log")});
    bool has_survived = survives();
    bool was_killed = killer.end();  // maybe when everything was done
    EXPECT_TRUE(has_survived || was_killed);
    if (!was_killed) return false;
    EXPECT_EQ(handset.exit_status(), "signal 9 (Killed)");
    return true;
  }

  bool is_linked(const std::string& log) const {
    return vorn.linked(1) == log || vorn.linked(2) == log;
  }

  static constexpr unsigned kKillStep = QOREXT_KILL_STEP;
  // Fewer system calls cannot store a log.
  static constexpr unsigned kFewestCalls = 30;

  Handset handset{Handset::off};
  VornFolder vorn{handset.phone()};
};

TEST_F(KilledStore, LosesNoLogInAMerge) {
  kill_at_each_call(
      [&] {
        vorn.put(kCurrentLog, "current log");
        vorn.link(1, kCurrentLog);
        vorn.put(kPreviousLog, "previous log");
        vorn.link(2, kPreviousLog);
      },
      [&](bool) {
        EXPECT_EQ(vorn.linked(1), kCurrentLog);
        EXPECT_EQ(vorn.linked(2), kPreviousLog);
        EXPECT_TRUE(vorn.begins_with(kCurrentLog, "current log"));
        EXPECT_EQ(vorn.content(kPreviousLog), "previous log");
      });
}

TEST_F(KilledStore, LosesNoLogInARotation) {
  kill_at_each_call(
      [&] {
        vorn.put(kCurrentLog, "current log", kLogLimit - 1);
        vorn.link(1, kCurrentLog);
        vorn.put(kPreviousLog, "previous log");
        vorn.link(2, kPreviousLog);
        vorn.put(kStaleFile, "stale");
        vorn.set_age(kStaleFile, kThreeDays);
      },
      [&](bool) {
        EXPECT_NE(vorn.linked(1), "");
        EXPECT_NE(vorn.linked(2), "");
        EXPECT_GE(vorn.size(kCurrentLog), kLogLimit - 1);
        EXPECT_TRUE(vorn.begins_with(kCurrentLog, "current log"));
        EXPECT_TRUE(is_linked(kCurrentLog));
        // The previous log goes when the current one has taken its place.
        if (vorn.linked(2) != kCurrentLog) {
          EXPECT_EQ(vorn.content(kPreviousLog), "previous log");
        }
      });
}

TEST_F(KilledStore, LosesNoLogWhenItCreatesTheSecondOne) {
  kill_at_each_call(
      [&] {
        vorn.put(kCurrentLog, "current log", kLogLimit - 1);
        vorn.link(1, kCurrentLog);
      },
      [&](bool) {
        EXPECT_TRUE(is_linked(kCurrentLog));
        EXPECT_TRUE(vorn.begins_with(kCurrentLog, "current log"));
      });
}

TEST_F(KilledStore, BeginsAgainWhenItCreatesTheFirstLog) {
  kill_at_each_call([] {},
                    [&](bool killed) {
                      // Until it has a link, a log is empty.
                      if (vorn.linked(1).empty()) {
                        EXPECT_TRUE(killed);
                        for (const std::string& name : vorn.names()) {
                          EXPECT_TRUE(name[0] != 'v' || vorn.size(name) == 0) << name;
                        }
                      }
                    });
}

}  // namespace
}  // namespace e2e
