// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/modem_control.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "tests/unit/qorextctl/fake_modem.h"
#include "tools/qorextctl/modem/ask_modem.h"

namespace qorextctl {
namespace {

Result<Json> ask(FakeModem& modem, double seconds = 10) {
  auto control = ModemControl::connect(modem.path());
  if (!control) return control.error();
  return control->call({{"command", "state"}}, Deadline::in_seconds(seconds));
}

TEST(ModemControl, ACommandIsOneLineAndSoIsItsAnswer) {
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

TEST(ModemControl, APathThatNoSocketCanHaveIsATransportError) {
  auto control = ModemControl::connect(std::string(200, 'x'));
  ASSERT_FALSE(control);
  EXPECT_NE(control.error().message.find("the path is too long"), std::string::npos);
}

TEST(ModemControl, AModemThatHangsUpIsATransportError) {
  FakeModem modem("{\"ok\":");
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("the modem has gone"), std::string::npos);
}

TEST(ModemControl, AnAnswerThatIsNoObjectIsATransportError) {
  FakeModem modem("[1]\n");
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("the answer is not a JSON object: [1]"), std::string::npos);
}

TEST(ModemControl, AnAnswerOfEndlessLevelsIsATransportError) {
  constexpr size_t kMany = 200'000;
  FakeModem modem(R"({"ok":true,"state":)" + std::string(kMany, '[') + std::string(kMany, ']') +
                  "}\n");
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_NE(answer.error().message.find("the answer is nested deeper than 64 levels"),
            std::string::npos);
}

TEST(ModemControl, OfALongAnswerThatIsNoObjectTheStartIsShown) {
  FakeModem modem("\x1b" + std::string(100'000, 'x') + "\n");
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("not a JSON object: \\x1Bxxx"), std::string::npos);
  EXPECT_LT(answer.error().message.size(), 500U);
}

TEST(ModemControl, AModemThatTellsAndNeverAnswersIsATransportErrorAfterTheDeadline) {
  std::string told;
  for (int i = 0; i < 200'000; ++i) told += "{\"message\":{}}\n";
  FakeModem modem(told);
  auto answer = ask(modem, 0.02);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("no answer in time"), std::string::npos);
}

TEST(ModemControl, ALineWithoutEndIsATransportErrorAfterTheDeadline) {
  FakeModem modem(std::string(60'000'000, 'x'));
  auto answer = ask(modem, 0.001);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("no answer in time"), std::string::npos);
}

TEST(ModemControl, ALineWithoutEndIsNotKept) {
  FakeModem modem(std::string(70'000'000, 'x'));
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_NE(answer.error().message.find("the answer's line has no end"), std::string::npos);
}

TEST(ModemControl, AnAnswerThatDoesNotSayWhetherItIsOneIsATransportError) {
  FakeModem modem("{\"ok\":\"yes\"}\n");
  auto answer = ask(modem);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_NE(answer.error().message.find("the answer's \"ok\" is not true or false"),
            std::string::npos);
}

TEST(ModemControl, AnAnswerWithoutWhatIsWaitedForIsATransportError) {
  FakeModem modem("{\"ok\":true}\n");
  auto control = ModemControl::connect(modem.path());
  ASSERT_TRUE(control);
  auto answer = call_to_end(*control, {{"command", "hob_save"}}, 10);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_NE(answer.error().message.find("the modem's answer is not understood"), std::string::npos);
}

TEST(ModemControl, WordsThatAreNoTextAreSentAllTheSame) {
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
  // The modem serves the first client and never comes to the second one.
  auto other = ModemControl::connect(modem.path());
  ASSERT_TRUE(other);
  auto answer = other->call({{"command", "state"}}, Deadline::in_seconds(0.05));
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().outcome, Outcome::transport);
  EXPECT_NE(answer.error().message.find("no answer in time"), std::string::npos);
}

TEST(ModemControl, AModemThatDoesNotTakeTheConnectionIsNotWaitedForForEver) {
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
  EXPECT_NE(refused.error().message.find("the modem does not listen"), std::string::npos);
  auto sent = waiting->call({{"command", std::string(500'000, 'x')}}, Deadline::in_seconds(0.02));
  EXPECT_FALSE(sent);
  unlink(path.c_str());
}

}  // namespace
}  // namespace qorextctl
