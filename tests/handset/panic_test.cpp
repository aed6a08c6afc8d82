// SPDX-License-Identifier: Apache-2.0
// The crash notice, which depends on the phone's /proc and /sys.

#include "tests/e2e/support/handset.h"
#include "tests/handset/device_files.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::Not;
using testing::StartsWith;

constexpr const char* kBootInfo = "/proc/bootinfo";
constexpr const char* kRestarts = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr const char* kReason = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

class PanicNotice : public testing::Test {
 protected:
  // Starts the daemon. Returns whether it sends the notice.
  bool is_sent() {
    handset.start_modem();
    handset.start_serving();
    std::string notices;
    for (const std::string& request : handset.modem_requests()) {
      if (request.starts_with("qorext utils ")) notices += request;
    }
    EXPECT_THAT(notices, testing::AnyOf("", testing::HasSubstr(R"("type":4)")));
    return !notices.empty();
  }
  void put(const char* path, const std::string& content) {
    put_file(handset.phone().folder() + path, content);
  }

  Handset handset{Handset::off};
};

TEST_F(PanicNotice, IsNotSentAfterAnOrdinaryStart) {
  put(kBootInfo, "POWERUPREASON : 0x00000001\n");
  put(kRestarts, "0\n");
  put(kReason, "watchdog\n");
  EXPECT_FALSE(is_sent());
}

TEST_F(PanicNotice, IsSentAfterAKernelPanic) {
  put(kBootInfo, "POWERUPREASON : 0x00020000\n");
  EXPECT_TRUE(is_sent());
}

TEST_F(PanicNotice, IsSentAfterAModemRestart) {
  put(kBootInfo, "POWERUPREASON : 0x00000001\n");
  put(kRestarts, "2\n");
  EXPECT_TRUE(is_sent());
}

TEST_F(PanicNotice, IsSentForAnyReasonOfAModemCrash) {
  put(kReason, "watchdog\n");
  EXPECT_TRUE(is_sent());
}

}  // namespace
}  // namespace e2e
