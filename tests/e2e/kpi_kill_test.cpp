// SPDX-License-Identifier: Apache-2.0
// The daemon is killed at each system call of storing a log, and started again: it must not lose a
// complete log, and must store the next one.

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/syscall_killer.h"
#include "tests/e2e/support/vorn.h"

namespace e2e {
namespace {

constexpr long kThreeDays = 3 * 86400;

constexpr char kStaleFile[] = "vorn_20250101000000.log";

class KilledStore : public testing::Test {
 protected:
  KilledStore() { handset.start_modem(); }

  // Waits until the daemon has processed all packets. Returns false if it has been killed.
  bool survives() {
    handset.indicate("generic");
    return handset.next_message() != "nothing";
  }

  // Uploads "new log" as package 7 once for every kKillStep-th system call of its last packet, to
  // the directory that `prepare` creates. `check` checks the directory each time.
  template <class Prepare, class Check>
  void kill_at_each_call(Prepare prepare, Check check) {
    unsigned call = 0;
    bool killed = true;
    while (killed && !HasFailure()) {
      call += kKillStep;
      SCOPED_TRACE(fmt::format("killed at system call {}", call));
      killed = upload_and_kill(call, prepare);
      check(killed);
      if (killed) handset.start_serving();
      upload_log(handset.modem(), 8, "next log");
      EXPECT_TRUE(survives());
      EXPECT_TRUE(vorn.content(vorn.linked(1)).ends_with("next log"));
      check(false);
      handset.end_of_file();
    }
    RecordProperty("system_calls", static_cast<int>(call));
    EXPECT_GT(call, kMinCalls);
  }

  template <class Prepare>
  bool upload_and_kill(unsigned call, Prepare prepare) {
    vorn.clear();
    prepare();
    handset.start_serving();
    upload(handset.modem(), {7, 1, false, le32(kLogHeader) + characters("new ")});
    EXPECT_TRUE(survives());
    SyscallKiller killer(handset.pid(), call);
    upload(handset.modem(), {7, 2, true, characters("log")});
    bool has_survived = survives();
    bool was_killed = killer.end();  // possibly after the last packet was stored
    EXPECT_TRUE(has_survived || was_killed);
    if (!was_killed) return false;
    EXPECT_EQ(handset.exit_status(), "signal 9 (Killed)");
    return true;
  }

  bool is_linked(const std::string& log) const {
    return vorn.linked(1) == log || vorn.linked(2) == log;
  }

  static constexpr unsigned kKillStep = QOREXT_KILL_STEP;
  // Storing a log takes more system calls.
  static constexpr unsigned kMinCalls = 30;

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
        // The previous log is deleted when the current one has taken its place.
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

TEST_F(KilledStore, StartsAgainWhenItCreatesTheFirstLog) {
  kill_at_each_call([] {},
                    [&](bool killed) {
                      // A log without a link is empty.
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
