// SPDX-License-Identifier: Apache-2.0
// Waiting for a modem that is absent, silent, or on a separate chip that starts later.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
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

TEST(AbsentModem, EndsTheDaemonAfter25Seconds) {
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

// Accepts connections in place of the modem, and answers none.
class SilentSocket {
 public:
  explicit SilentSocket(const std::string& endpoint) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string path = endpoint.substr(endpoint.find(':') + 1);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(fd_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(chmod(path.c_str(), 0777), 0);
    constexpr int kConnections = 128;
    EXPECT_EQ(listen(fd_.get(), kConnections), 0);
  }

 private:
  qorextctl::UniqueFd fd_{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
};

TEST(SilentNameService, EndsTheDaemonAsSoonAsAnAbsentModem) {
  Handset handset(Handset::off);
  SilentSocket silent(handset.phone().modem());
  auto start = Clock::now();
  handset.start_daemon();
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  EXPECT_LE(Clock::now() - start, seconds(35));
  EXPECT_THAT(handset.log().texts(), Contains("main:qmi_qorext_sprint_client_init failed = -2"));
}

TEST(SilentModem, FailsTheRequestAfter15Seconds) {
  Handset handset;
  handset.modem().command("nv 7000 a0a1a2a3");
  handset.modem().command("nv 7001 b0b1b2b3");
  handset.inject("element_read", "delay delay_ms=15400");

  auto start = Clock::now();
  Served silent = handset.serve(nv_read(7000));
  auto taken = Clock::now() - start;
  EXPECT_GE(taken, milliseconds(14900));
  EXPECT_LE(taken, seconds(19));
  EXPECT_EQ(silent.replies, as_hex(reply(kNvRead, 5)));
  EXPECT_THAT(silent.log, Contains("NV Read fail - -3, result - 0, error - 0"));

  // The late answer arrives while the next request waits for its own.
  handset.inject("element_read", "delay delay_ms=1500");
  EXPECT_EQ(handset.serve(nv_read(7001)).replies, as_hex(nv_item(7001, hex("B0B1B2B3"))));
  EXPECT_EQ(handset.serve(nv_read(7000)).replies, as_hex(nv_item(7000, hex("A0A1A2A3"))));
}

// Phones with a separate modem chip, where the vendor service comes up twice.
const std::string kInit = "qmi_qorext_hook_client_init: ";
const std::string kWait = kInit + "wait for server to come up.";

std::string found_services(int services) {
  return fmt::format("{}qmi_client_get_service_list() returned 0 num_services = {}", kInit,
                     services);
}

class SeparateModem : public testing::TestWithParam<std::string> {
 protected:
  SeparateModem() {
    handset.phone().set_property("ro.baseband", GetParam());
    handset.start_modem();
  }

  // Expects the daemon to wait for the second instance and to retry once a second.
  void expect_waiting() {
    constexpr seconds kWaitingTime{2};
    auto start = Clock::now();
    ASSERT_TRUE(handset.log().wait_for(kWait));
    std::this_thread::sleep_for(kWaitingTime);
    EXPECT_LE(waits(), (Clock::now() - start) / seconds(1) + 1);
    EXPECT_FALSE(handset.daemon().wait_exit(Deadline::in(seconds(0))));
  }
  ptrdiff_t waits() {
    Texts log = handset.log().texts();
    return std::count(log.begin(), log.end(), kWait);
  }
  Texts last(size_t count) {
    Texts log = handset.log().texts();
    return {log.end() - static_cast<ptrdiff_t>(std::min(count, log.size())), log.end()};
  }

  Handset handset{Handset::off};
};

TEST_P(SeparateModem, DelaysTheDaemonUntilItsInstanceComesUp) {
  handset.start_daemon();
  expect_waiting();
  handset.modem().command("instances 2");
  Texts log = handset.wait_until_serving();
  EXPECT_THAT(log, Contains(found_services(1)));
  EXPECT_THAT(log, Contains(found_services(2)));
  EXPECT_THAT(log, Contains("qmi_qorext_hook_client_init Succeeded"));
  EXPECT_EQ(handset.serve(cdma(0x020000B0)).replies, as_hex(reply(0x020000B0, 0, le32(1))));
}

TEST_P(SeparateModem, ThatIsAlreadyUpIsNotWaitedFor) {
  handset.modem().command("instances 2");
  handset.start_daemon();
  EXPECT_THAT(handset.wait_until_serving(), testing::Not(Contains(kWait)));
}

// The signal of the new instance stays set, so the daemon retries without waiting.
TEST_P(SeparateModem, ThatDoesNotComeUpEndsTheDaemonAfterAllAttempts) {
  handset.start_daemon();
  expect_waiting();
  handset.modem().command("service qorext down");
  handset.modem().command("service qorext up");
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  EXPECT_EQ(waits(), 500);
  EXPECT_THAT(last(2), ElementsAre(kInit + "Giving up- Retries exceede 500 ",
                                   "main:qmi_qorext_hook_client_t failed = -1"));
}

INSTANTIATE_TEST_SUITE_P(Of, SeparateModem, testing::Values("mdm", "MDM9x25"));

}  // namespace
}  // namespace e2e
