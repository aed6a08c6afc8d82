// SPDX-License-Identifier: Apache-2.0
// The waits that take their time: for a modem that is not there, and for one that does not answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <chrono>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAreArray;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

// Five attempts of five waits of a second.
Texts attempts() {
  Texts texts;
  for (int attempt = 1; attempt <= 5; ++attempt) {
    texts.push_back("sprint_client_init: qmi_client_notifier_init ");
    for (int poll = 0; poll < 5; ++poll) {
      texts.push_back(
          "sprint_client_init: qmi_client_get_service_list() returned -2 num_services = 0");
      texts.push_back("sprint_client_init: wait for server to come up.");
    }
    texts.push_back(
        "sprint_client_init: qmi_client_get_service_list() returned -2 num_entries = 0 "
        "num_services = 0");
    texts.push_back(
        fmt::format("qmi_qorext_sprint_client_init_with_type: Try ({}): Client init "
                    "fail. rc = -2",
                    attempt));
  }
  return texts;
}

TEST(AbsentModem, IsGivenUpAfter25Seconds) {
  Handset handset(Handset::off);
  auto start = Clock::now();
  handset.start_daemon();
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  auto taken = Clock::now() - start;
  EXPECT_GE(taken, seconds(25));
  EXPECT_LE(taken, seconds(32));

  Texts log = handset.log().texts();
  EXPECT_THAT(
      Texts(log.begin() + 2, log.end()),
      ElementsAreArray(attempts() + Texts{"qmi_qorext_sprint_client_init: NAS Client Init rc: -2",
                                          "main:qmi_qorext_sprint_client_init failed = -2"}));
}

// Takes connections where the modem would be, and answers none.
class SilentSocket {
 public:
  explicit SilentSocket(const std::string& endpoint) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string path = endpoint.substr(endpoint.find(':') + 1);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(fd_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(chmod(path.c_str(), 0777), 0);
    constexpr int kAllOfTheDaemons = 128;
    EXPECT_EQ(listen(fd_.get(), kAllOfTheDaemons), 0);
  }

 private:
  qorextctl::UniqueFd fd_{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
};

TEST(SilentNameService, IsGivenUpAsSoonAsAnAbsentModem) {
  Handset handset(Handset::off);
  SilentSocket silent(handset.phone().modem());
  auto start = Clock::now();
  handset.start_daemon();
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  EXPECT_LE(Clock::now() - start, seconds(35));
  EXPECT_THAT(handset.log().texts(), Contains("main:qmi_qorext_sprint_client_init failed = -2"));
}

TEST(SilentModem, FailsTheRequestAfter15Seconds) {
  constexpr uint32_t kRead = 0x02000016;
  Handset handset;
  handset.modem().command("nv 7000 a0a1a2a3");
  handset.modem().command("nv 7001 b0b1b2b3");
  handset.spoil("element_read", "delay delay_ms=15400");

  auto start = Clock::now();
  Served silent = handset.serve(cdma(kRead, words({7000, 0, 0, 0})));
  auto taken = Clock::now() - start;
  EXPECT_GE(taken, milliseconds(14900));
  EXPECT_LE(taken, seconds(19));
  EXPECT_EQ(silent.replies, as_hex(reply(kRead, 5)));
  EXPECT_THAT(silent.log, Contains("NV Read fail - -3, result - 0, error - 0"));

  // The late answer comes while the next request waits for its own.
  handset.spoil("element_read", "delay delay_ms=1500");
  EXPECT_EQ(handset.serve(cdma(kRead, words({7001, 0, 0, 0}))).replies,
            as_hex(reply(kRead, 0, words({7001, 0, 0, 4}) + hex("B0B1B2B3") + zeros(4))));
  EXPECT_EQ(handset.serve(cdma(kRead, words({7000, 0, 0, 0}))).replies,
            as_hex(reply(kRead, 0, words({7000, 0, 0, 4}) + hex("A0A1A2A3") + zeros(4))));
}

}  // namespace
}  // namespace e2e
