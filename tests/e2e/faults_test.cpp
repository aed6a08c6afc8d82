// SPDX-License-Identifier: Apache-2.0
// Faults of the modem and the pipes; the daemon continues to serve.
#include <signal.h>

#include <fstream>

#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

const Bytes kSubsidyLockCheck = cdma(0x0200000A, {}, "246810");
const Bytes kLteQuery = cdma(0x020000C0);

// Less than the modem's timeout of 15 s, and more than any immediate reply takes.
constexpr std::chrono::seconds kImmediate{8};

class Faults : public HandsetTest {
 protected:
  void expect_serving() {
    handset.modem().command("nv 7001 c0ffee");
    expect_reply(nv_read(7001), nv_item(7001, hex("C0FFEE")));
  }
  // As expect_reply(), without waiting for the modem.
  void expect_immediate_reply(const Bytes& request, const Bytes& reply,
                              const std::string& logged = "") {
    auto start = Clock::now();
    Texts log = expect_reply(request, reply);
    EXPECT_LT(Clock::now() - start, kImmediate);
    if (!logged.empty()) {
      EXPECT_THAT(log, Contains(logged));
    }
  }
};

TEST_F(Faults, AClosedReplyPipeIsLoggedAndRequestsAreServed) {
  handset.daemon().replies() = qorextctl::FramePipe(qorextctl::UniqueFd());
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(handset.serve(hex("01050506 00000000")).log, Contains("Write to parent failed 32"));
  }
  EXPECT_EQ(handset.serve(cdma(kUnknownId)).log.back(), "Write to parent failed 32");
  EXPECT_THAT(handset.serve(nv_read(28)).log, Contains("Write to parent failed 32"));
  EXPECT_THAT(handset.end_of_file(),
              ElementsAre("Read 0 bytes from pipe", "Buffer length is zero..Exiting QOREXT"));
  EXPECT_EQ(handset.exit_status(), "exit status 0");
}

TEST_F(Faults, AClosedUnsolicitedPipeIsLoggedAndRequestsAreServed) {
  handset.daemon().unsolicited() = qorextctl::FramePipe(qorextctl::UniqueFd());
  size_t before = 0;
  for (const char* indication : {"notify", "generic", "coverage", "carrier_event", "pfp"}) {
    handset.indicate(indication);
    auto failed = handset.log().wait_for("Write to parent failed 32", before);
    ASSERT_TRUE(failed) << indication;
    before = *failed + 1;
    expect_serving();
  }
}

// Faults after which the client library returns a decoding error.
class BadAnswers : public Faults, public testing::WithParamInterface<std::string> {};

TEST_P(BadAnswers, FailOnlyTheirOwnRequest) {
  handset.modem().command("nv 7000 a1a2a3a4");
  handset.inject("element_read", GetParam());
  expect_immediate_reply(nv_read(7000), reply(kNvRead, 5),
                         "NV Read fail - -5, result - 0, error - 0");
  expect_serving();
}

INSTANTIATE_TEST_SUITE_P(Truncated, BadAnswers,
                         testing::Values("truncated bytes=0", "truncated bytes=2",
                                         "truncated bytes=7", "truncated bytes=20"));
INSTANTIATE_TEST_SUITE_P(Malformed, BadAnswers, testing::Values("malformed"));

TEST_F(Faults, RandomAnswersDoNotStopTheDaemon) {
  for (int i = 0; i < 20; ++i) {
    handset.inject("element_read", "garbage");
    auto start = Clock::now();
    EXPECT_EQ(handset.serve(nv_read(28)).replies.substr(0, 8), "16000002");
    EXPECT_LT(Clock::now() - start, kImmediate);
  }
  expect_serving();
}

TEST_F(Faults, ADuplicateAnswerIsIgnored) {
  handset.modem().command("nv 7000 a1a2");
  handset.inject("element_read", "duplicate");
  expect_reply(nv_read(7000), nv_item(7000, hex("A1A2")));
  expect_serving();
}

TEST_F(Faults, ErrorsOfEveryServiceAreReported) {
  handset.inject("element_read", "error error=52");
  expect_immediate_reply(nv_read(28), reply(kNvRead, 5),
                         "NV Read fail - 0, result - 1, error - 52");
  handset.inject("verify_subsidy_lock", "error error=17");
  expect_immediate_reply(kSubsidyLockCheck, reply(0x0200000A, 3, zeros(6)),
                         " qorext_hook_sprint_verify_subsidy_lock Error = 17");
  handset.inject("get_serving_system", "error error=18");
  expect_immediate_reply(kLteQuery, echo(kLteQuery, 5));
  expect_serving();
}

// Requests to each of the three services after the modem has disappeared.
class GoneModem : public Faults {
 protected:
  void expect_failures() {
    expect_immediate_reply(nv_read(28), reply(kNvRead, 5),
                           "NV Read fail - -2, result - 0, error - 0");
    expect_immediate_reply(kLteQuery, echo(kLteQuery, 5),
                           "get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (-2), error (0).");
    expect_immediate_reply(kSubsidyLockCheck, reply(0x0200000A, 3, zeros(6)),
                           "qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (-2).");
    Bytes band = cdma(0x020000B1, le32(1));
    expect_immediate_reply(band, echo(band, 5));
    expect_immediate_reply(cdma(0x0200000D), reply(0x0200000D, 5));
  }
};

TEST_F(GoneModem, FailsEveryRequestImmediately) {
  handset.kill_modem();
  expect_failures();
  expect_reply(cdma(kUnknownId), reply(kUnknownId, 6));
}

// The daemon opens its clients only once, at its start.
TEST_F(GoneModem, IsNotReplacedByAnotherOne) {
  handset.kill_modem();
  handset.start_modem();
  expect_failures();
}

TEST_F(GoneModem, FailsTheRequestThatWaitsForIt) {
  handset.inject("element_read", "silent");
  handset.send(nv_read(28));
  EXPECT_TRUE(handset.log().wait_for("NV Read with RDE index (28), recordNum(0), offset(0)."));
  auto start = Clock::now();
  handset.kill_modem();
  EXPECT_EQ(handset.served().replies, as_hex(reply(kNvRead, 5)));
  EXPECT_LT(Clock::now() - start, kImmediate);
}

TEST_F(GoneModem, CanBeOnlyOneService) {
  handset.modem().command("service qorext down");
  expect_immediate_reply(nv_read(28), reply(kNvRead, 5));
  expect_immediate_reply(kSubsidyLockCheck, reply(0x0200000A, 0, zeros(6)));
}

TEST_F(GoneModem, CanBeAServiceThatReturnsImmediately) {
  handset.inject("element_read", "close");
  expect_immediate_reply(nv_read(28), reply(kNvRead, 5));
  expect_immediate_reply(nv_read(28), reply(kNvRead, 5));
}

TEST(LateModem, IsWaitedFor) {
  Handset handset(Handset::off);
  handset.start_daemon();
  const std::string wait = "sprint_client_init: wait for server to come up.";
  auto first = handset.log().wait_for(wait);
  auto second = handset.log().wait_for(wait, first.value_or(0) + 1);
  ASSERT_TRUE(second);
  handset.start_modem();
  EXPECT_THAT(handset.wait_until_serving(), Contains("qmi_qorext_hook_client_init Succeeded"));
  EXPECT_EQ(handset.serve(kSubsidyLockCheck).replies, as_hex(reply(0x0200000A, 0, zeros(6))));
}

// Stops and continues the daemon, and sends it signals that it ignores.
class Signals : public Faults {
 protected:
  void signal(int number) { handset.daemon().process().signal(number); }
  void stop() {
    signal(SIGSTOP);
    EXPECT_TRUE(wait_until([this] { return state() == 'T'; }));
  }
  // 'S': sleeping, 'T': stopped.
  char state() {
    std::ifstream file(fmt::format("/proc/{}/stat", handset.pid()));
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
  handset.send(nv_read(28));
  signal(SIGCONT);
  EXPECT_EQ(handset.served().replies, as_hex(nv_item(28, hex("06"))));
  interrupt();
  expect_serving();
}

TEST_F(Signals, DoNotDisturbTheWaitForTheModem) {
  handset.inject("element_read", "delay delay_ms=500");
  handset.send(nv_read(28));
  handset.log().wait_for("NV Read with RDE index (28), recordNum(0), offset(0).");
  interrupt();
  stop();
  interrupt();
  EXPECT_EQ(handset.served().replies, as_hex(nv_item(28, hex("06"))));
  expect_serving();
}

}  // namespace
}  // namespace e2e
