// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/modem_control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "tests/unit/qorextctl/fake_modem.h"
#include "tools/qorextctl/modem/ask_modem.h"

namespace qorextctl {
namespace {

using testing::HasSubstr;

Result<Json> ask(FakeModem& modem, double seconds = 10) {
  auto control = ModemControl::connect(modem.path());
  if (!control) return control.error();
  return control->call({{"command", "state"}}, Deadline::in_seconds(seconds));
}

TEST(ModemControl, ACommandAndItsAnswerAreOneLineEach) {
  FakeModem modem("{\"ok\":true,\"state\":{}}\n");
  auto answer = ask(modem);
  ASSERT_TRUE(answer) << answer.error().message;
  EXPECT_EQ(answer->dump(), R"({"ok":true,"state":{}})");
  EXPECT_EQ(modem.received(), R"({"command":"state"})");
}

TEST(ModemControl, AMissingSocketIsATransportError) {
  auto control = ModemControl::connect("/nowhere/control.sock");
  ASSERT_FALSE(control);
  EXPECT_EQ(control.error().outcome, Outcome::transport);
  EXPECT_EQ(control.error().message,
            "the modem's control socket /nowhere/control.sock: No such file or directory; does "
            "qorext_modem run with --control?");
}

TEST(ModemControl, APathThatIsTooLongForASocketIsATransportError) {
  auto control = ModemControl::connect(std::string(200, 'x'));
  ASSERT_FALSE(control);
  EXPECT_THAT(control.error().message, HasSubstr("the path is too long"));
}

// Of a modem that sends this; empty if the call succeeds.
std::string error_after(const std::string& sent, double seconds = 10) {
  FakeModem modem(sent);
  auto answer = ask(modem, seconds);
  if (answer) return "";
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  return answer.error().message;
}

TEST(ModemControl, AWrongAnswerIsATransportError) {
  constexpr size_t kMany = 200'000;
  std::string deep = std::string(kMany, '[') + std::string(kMany, ']');
  EXPECT_THAT(error_after("{\"ok\":"), HasSubstr("the modem has gone"));
  EXPECT_THAT(error_after("[1]\n"), HasSubstr("the answer is not a JSON object: [1]"));
  EXPECT_THAT(error_after("{\"ok\":\"yes\"}\n"),
              HasSubstr("the answer's \"ok\" is not true or false"));
  EXPECT_THAT(error_after("{\"ok\":true,\"state\":" + deep + "}\n"),
              HasSubstr("the answer is nested deeper than 64 levels"));
}

TEST(ModemControl, OnlyTheBeginningOfALongWrongAnswerIsShown) {
  std::string error = error_after("\x1b" + std::string(100'000, 'x') + "\n");
  EXPECT_THAT(error, HasSubstr("not a JSON object: \\x1Bxxx"));
  EXPECT_LT(error.size(), 500U);
}

TEST(ModemControl, AnAnswerThatDoesNotEndIsATransportErrorAfterTheDeadline) {
  std::string reports;
  for (int i = 0; i < 200'000; ++i) reports += "{\"message\":{}}\n";
  EXPECT_THAT(error_after(reports, 0.02), HasSubstr("no answer in time"));
  EXPECT_THAT(error_after(std::string(60'000'000, 'x'), 0.001), HasSubstr("no answer in time"));
}

TEST(ModemControl, ALineIsLimitedTo64MiB) {
  EXPECT_THAT(error_after(std::string(70'000'000, 'x')), HasSubstr("the answer's line has no end"));
}

TEST(ModemControl, AnAnswerWithoutARequiredMemberIsATransportError) {
  FakeModem modem("{\"ok\":true}\n");
  auto control = ModemControl::connect(modem.path());
  ASSERT_TRUE(control);
  auto answer = call_to_end(*control, {{"command", "hob_save"}}, 10);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_THAT(answer.error().message, HasSubstr("the modem's answer is not understood"));
}

TEST(ModemControl, InvalidUtf8IsReplacedBeforeItIsSent) {
  FakeModem modem("{\"ok\":true}\n");
  auto control = ModemControl::connect(modem.path());
  ASSERT_TRUE(control);
  EXPECT_TRUE(control->call({{"command", "a\xFF"}}, Deadline::in_seconds(10)));
  EXPECT_EQ(modem.received(), "{\"command\":\"a\xEF\xBF\xBD\"}");
}

TEST(ModemControl, ASilentModemIsATransportErrorAfterTheDeadline) {
  FakeModem modem("too late\n");
  auto control = ModemControl::connect(modem.path());
  ASSERT_TRUE(control);
  // The modem serves only the first client.
  auto other = ModemControl::connect(modem.path());
  ASSERT_TRUE(other);
  auto answer = other->call({{"command", "state"}}, Deadline::in_seconds(0.05));
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_THAT(answer.error().message, HasSubstr("no answer in time"));
}

TEST(ModemControl, ConnectingAndSendingHaveATimeout) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string path = testing::TempDir() + "qorextctl_full_" + std::to_string(getpid());
  strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  unlink(path.c_str());
  UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 0), 0);
  auto waiting = ModemControl::connect(path, 0.02);
  ASSERT_TRUE(waiting);
  auto refused = ModemControl::connect(path, 0.02);
  ASSERT_FALSE(refused);
  EXPECT_THAT(refused.error().message, HasSubstr("the modem does not listen"));
  auto sent = waiting->call({{"command", std::string(500'000, 'x')}}, Deadline::in_seconds(0.02));
  EXPECT_FALSE(sent);
  unlink(path.c_str());
}

}  // namespace
}  // namespace qorextctl
