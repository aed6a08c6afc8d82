// SPDX-License-Identifier: Apache-2.0
// What goes wrong with the modem and the pipes, and that the daemon serves on.
#include <signal.h>

#include <fstream>

#include "tests/e2e/support/carrier_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kRead = 0x02000016;
constexpr uint32_t kUnknown = 0x02000014;

// What is answered at once takes less, on any machine; a modem that is waited for takes 15 s.
constexpr std::chrono::seconds kAtOnce{8};

class Faults : public CarrierRequests {
 protected:
  static Bytes reading(uint32_t rde_id) { return cdma(kRead, words({rde_id, 0, 0, 0})); }
  static std::string item(uint32_t rde_id, const Bytes& data) {
    auto size = static_cast<uint32_t>(data.size());
    return as_hex(reply(kRead, 0, words({rde_id, 0, 0, size}) + data + zeros(4)));
  }
  void expect_serving() {
    handset.modem().command("nv 7001 c0ffee");
    EXPECT_EQ(handset.serve(reading(7001)).replies, item(7001, hex("C0FFEE")));
  }
  // As serve(), and it must not take long.
  Served serve_at_once(const Bytes& request) {
    auto start = Clock::now();
    Served served = handset.serve(request);
    EXPECT_LT(Clock::now() - start, kAtOnce);
    return served;
  }
};

TEST_F(Faults, AClosedReplyPipeIsLoggedAndServedOn) {
  handset.daemon().replies() = qorextctl::FramePipe(qorextctl::UniqueFd());
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(handset.serve(hex("01050506 00000000")).log, Contains("Write to parent failed 32"));
  }
  EXPECT_EQ(handset.serve(cdma(kUnknown)).log.back(), "Write to parent failed 32");
  EXPECT_THAT(handset.serve(reading(28)).log, Contains("Write to parent failed 32"));
  EXPECT_THAT(handset.end_of_file(),
              ElementsAre("Read 0 bytes from pipe", "Buffer length is zero..Exiting QOREXT"));
  EXPECT_EQ(handset.exit_status(), "exit status 0");
}

TEST_F(Faults, AClosedUnsolicitedPipeIsLoggedAndServedOn) {
  handset.daemon().unsolicited() = qorextctl::FramePipe(qorextctl::UniqueFd());
  size_t before = 0;
  for (const char* indication : {"notify", "generic", "coverage", "carrier_event", "pfp"}) {
    handset.modem().command(std::string("indicate ") + indication);
    auto failed = handset.log().wait_for("Write to parent failed 32", before,
                                         qorextctl::Deadline::in(kPatience));
    ASSERT_TRUE(failed) << indication;
    before = *failed + 1;
    expect_serving();
  }
}

struct BadAnswer {
  const char* fault;
  int send_result;  // of the modem client library
};

class BadAnswers : public Faults, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadAnswers, FailTheRequestAndNoOther) {
  auto [fault, send_result] = GetParam();
  handset.modem().command("nv 7000 a1a2a3a4");
  handset.spoil("element_read", fault);
  Served served = serve_at_once(reading(7000));
  EXPECT_EQ(served.replies, as_hex(reply(kRead, 5)));
  EXPECT_THAT(served.log,
              Contains(fmt::format("NV Read fail - {}, result - 0, error - 0", send_result)));
  expect_serving();
}

INSTANTIATE_TEST_SUITE_P(Truncated, BadAnswers,
                         testing::Values(BadAnswer{"truncated bytes=0", -5},
                                         BadAnswer{"truncated bytes=2", -5},
                                         BadAnswer{"truncated bytes=7", -5},
                                         BadAnswer{"truncated bytes=20", -5}));
INSTANTIATE_TEST_SUITE_P(Malformed, BadAnswers, testing::Values(BadAnswer{"malformed", -5}));

TEST_F(Faults, RandomAnswersAreSurvived) {
  for (int i = 0; i < 20; ++i) {
    handset.spoil("element_read", "garbage");
    EXPECT_EQ(serve_at_once(reading(28)).replies.substr(0, 8), "16000002");
  }
  expect_serving();
}

TEST_F(Faults, AnAnswerThatComesTwiceIsTakenOnce) {
  handset.modem().command("nv 7000 a1a2");
  handset.spoil("element_read", "duplicate");
  EXPECT_EQ(handset.serve(reading(7000)).replies, item(7000, hex("A1A2")));
  expect_serving();
}

TEST_F(Faults, ErrorsOfTheModemAreToldByEveryService) {
  handset.spoil("element_read", "error error=52");
  Served read = serve_at_once(reading(28));
  EXPECT_EQ(read.replies, as_hex(reply(kRead, 5)));
  EXPECT_THAT(read.log, Contains("NV Read fail - 0, result - 1, error - 52"));
  handset.spoil("verify_subsidy_lock", "error error=17");
  Served lock = serve_at_once(cdma(0x0200000A, {}, "246810"));
  EXPECT_EQ(lock.replies, as_hex(reply(0x0200000A, 3, zeros(6))));
  EXPECT_THAT(lock.log, Contains(" qorext_hook_sprint_verify_subsidy_lock Error = 17"));
  handset.spoil("get_serving_system", "error error=18");
  Bytes lte = cdma(0x020000C0);
  EXPECT_EQ(serve_at_once(lte).replies, as_hex(echo(lte, 5)));
  expect_serving();
}

// The requests of the three services when their service has gone.
class GoneModem : public Faults {
 protected:
  void expect_failures() {
    Served read = serve_at_once(reading(28));
    EXPECT_EQ(read.replies, as_hex(reply(kRead, 5)));
    EXPECT_THAT(read.log, Contains("NV Read fail - -2, result - 0, error - 0"));
    Bytes lte = cdma(0x020000C0);
    Served data = serve_at_once(lte);
    EXPECT_EQ(data.replies, as_hex(echo(lte, 5)));
    EXPECT_THAT(data.log,
                Contains("get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (-2), error (0)."));
    Served lock = serve_at_once(cdma(0x0200000A, {}, "246810"));
    EXPECT_EQ(lock.replies, as_hex(reply(0x0200000A, 3, zeros(6))));
    EXPECT_THAT(lock.log, Contains("qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (-2)."));
    Bytes band = cdma(0x020000B1, le32(1));
    EXPECT_EQ(serve_at_once(band).replies, as_hex(echo(band, 5)));
    EXPECT_EQ(serve_at_once(cdma(0x0200000D)).replies, as_hex(reply(0x0200000D, 5)));
  }
};

TEST_F(GoneModem, FailsEveryRequestAtOnce) {
  handset.kill_modem();
  expect_failures();
  EXPECT_EQ(handset.serve(cdma(kUnknown)).replies, as_hex(reply(kUnknown, 6)));
}

// Clients are opened once, at the start.
TEST_F(GoneModem, StaysGoneWhenAnotherOneComes) {
  handset.kill_modem();
  handset.start_modem();
  expect_failures();
}

TEST_F(GoneModem, FailsTheRequestThatWaitsForIt) {
  handset.spoil("element_read", "silent");
  handset.send(reading(28));
  EXPECT_TRUE(handset.log().wait_for("NV Read with RDE index (28), recordNum(0), offset(0).", 0,
                                     qorextctl::Deadline::in(kPatience)));
  auto start = Clock::now();
  handset.kill_modem();
  EXPECT_EQ(handset.served().replies, as_hex(reply(kRead, 5)));
  EXPECT_LT(Clock::now() - start, kAtOnce);
}

TEST_F(GoneModem, MayBeOneServiceAlone) {
  handset.modem().command("service qorext down");
  EXPECT_EQ(serve_at_once(reading(28)).replies, as_hex(reply(kRead, 5)));
  EXPECT_EQ(serve_at_once(cdma(0x0200000A, {}, "246810")).replies,
            as_hex(reply(0x0200000A, 0, zeros(6))));
}

TEST_F(GoneModem, MayHaveLostAServiceThatComesBackAtOnce) {
  handset.spoil("element_read", "close");
  EXPECT_EQ(serve_at_once(reading(28)).replies, as_hex(reply(kRead, 5)));
  EXPECT_EQ(serve_at_once(reading(28)).replies, as_hex(reply(kRead, 5)));
}

TEST(LateModem, IsWaitedFor) {
  Handset handset(Handset::off);
  handset.start_daemon();
  const std::string wait = "sprint_client_init: wait for server to come up.";
  auto deadline = qorextctl::Deadline::in(kPatience);
  auto first = handset.log().wait_for(wait, 0, deadline);
  auto second = handset.log().wait_for(wait, first.value_or(0) + 1, deadline);
  ASSERT_TRUE(second);
  handset.start_modem();
  EXPECT_THAT(handset.wait_until_serving(), Contains("qmi_qorext_hook_client_init Succeeded"));
  EXPECT_EQ(handset.serve(cdma(0x0200000A, {}, "246810")).replies,
            as_hex(reply(0x0200000A, 0, zeros(6))));
}

// Stops and continues the daemon, and sends signals that nobody has asked for.
class Signals : public Faults {
 protected:
  void signal(int number) { handset.daemon().process().signal(number); }
  void stop() {
    signal(SIGSTOP);
    auto deadline = qorextctl::Deadline::in(kPatience);
    while (state() != 'T' && !deadline.passed()) sched_yield();
    EXPECT_EQ(state(), 'T');
  }
  // 'S' sleeps, 'T' is stopped.
  char state() {
    std::ifstream file("/proc/" + std::to_string(handset.daemon().process().pid()) + "/stat");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    size_t name_end = text.rfind(')');
    return name_end == std::string::npos ? '?' : text[name_end + 2];
  }
  void interrupt() {
    for (int number : {SIGWINCH, SIGCHLD, SIGURG, SIGPIPE, SIGCONT}) signal(number);
  }
};

TEST_F(Signals, DoNotDisturbTheWaitForARequest) {
  interrupt();
  stop();
  handset.send(reading(28));
  signal(SIGCONT);
  EXPECT_EQ(handset.served().replies, item(28, hex("06")));
  interrupt();
  expect_serving();
}

TEST_F(Signals, DoNotDisturbTheWaitForTheModem) {
  handset.spoil("element_read", "delay delay_ms=500");
  handset.send(reading(28));
  handset.log().wait_for("NV Read with RDE index (28), recordNum(0), offset(0).", 0,
                         qorextctl::Deadline::in(kPatience));
  interrupt();
  stop();
  interrupt();
  EXPECT_EQ(handset.served().replies, item(28, hex("06")));
  expect_serving();
}

}  // namespace
}  // namespace e2e
