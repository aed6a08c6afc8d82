// SPDX-License-Identifier: Apache-2.0
// Interrupted and partial system calls.
#include <signal.h>

#include <atomic>
#include <thread>

#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

class Interruptions : public FaultyHandset {};

// Sends a signal to the daemon repeatedly.
class Signalling {
 public:
  explicit Signalling(pid_t pid)
      : thread_([this, pid] {
          while (!ended_) {
            kill(pid, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::microseconds(100));
          }
        }) {}
  Signalling(const Signalling&) = delete;
  Signalling& operator=(const Signalling&) = delete;
  ~Signalling() {
    ended_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

TEST_F(Interruptions, BySignalsDoNotAffectAThousandRequests) {
  constexpr uint32_t kRequests = 1000;
  constexpr uint32_t kMinSignals = 100;
  {
    Signalling signals(pid());
    for (uint32_t i = 0; i < kRequests; ++i) {
      Bytes request = cdma(0x020000B1, le32(i));
      ASSERT_TRUE(handset.daemon().send(request));
      ASSERT_EQ(next_reply(handset.daemon()), as_hex(echo(request, 0))) << i;
      handset.indicate("notify");
      ASSERT_NE(handset.next_message(), "nothing");
    }
  }
  EXPECT_GT(switches->caught_signals, kMinSignals);
  EXPECT_EQ(handset.modem().value("state", "/state/carrier/bc10"), std::to_string(kRequests - 1));
  EXPECT_THAT(handset.log().texts(), Contains(" Got EINTR, ignoring"));
}

TEST_F(Interruptions, OfAReadLeaveTheRequestInThePipe) {
  switches->read_error = EINTR;
  switches->failing_reads = 2;
  handset.send(band_query);
  EXPECT_EQ(next_reply(handset.daemon()), band_reply);
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(handset.served().log,
                ElementsAre("Dispatcher: read failed with errno 4", "Read failed"));
  }
  EXPECT_EQ(handset.served().log[0], "Read 18 bytes from pipe");
}

TEST_F(Interruptions, OfAReplyAreNeitherRetriedNorLogged) {
  switches->max_written = 11;
  Served served = handset.serve(band_query);
  EXPECT_EQ(served.replies, band_reply.substr(0, 22));
  EXPECT_EQ(handset.serve(generic(0x70000)).replies, "01070000ffffffff");
  switches->max_written = 0;
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);
  EXPECT_THAT(served.log, testing::Not(Contains(testing::StartsWith("Write to parent failed"))));
}

TEST_F(Interruptions, OfAMessageAreNeitherRetriedNorLogged) {
  std::string message = as_hex(cdma_message(0x020001B0, le32(7)));
  switches->max_written = 31;
  handset.indicate("carrier_event value=7");
  auto& pipe = handset.daemon().unsolicited();
  wait_until([&] {
    pipe.read_available();
    return !pipe.pending().empty();
  });
  EXPECT_EQ(as_hex(pipe.take_all()), message.substr(0, 62));
  switches->max_written = 0;
  handset.indicate("carrier_event value=7");
  EXPECT_EQ(handset.messages_until_idle(), Texts{message});
  EXPECT_THAT(handset.log().texts(),
              testing::Not(Contains(testing::StartsWith("Write to parent failed"))));
}

}  // namespace
}  // namespace e2e
