// SPDX-License-Identifier: Apache-2.0
// The interactive shell on a terminal.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/terminal.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPrompt = "qorext>";
constexpr const char* kUp = "\x1B[A";
constexpr const char* kSearch = "\x12";
constexpr const char* kCancel = "\x03";
constexpr const char* kEnd = "\x04";

// A shell on a modem that the test can query.
class Shell : public testing::Test {
 protected:
  Shell() { handset.start_modem(); }

  void open(const std::vector<std::string>& options) {
    std::vector<std::string> words = {QOREXT_BIN "/qorextctl",          "--modem",
                                      handset.phone().modem(),          "--control",
                                      handset.phone().control_socket(), "shell"};
    words.insert(words.end(), options.begin(), options.end());
    terminal.emplace(words, Terminal::Environment{{"HOME", handset.phone().folder()}});
  }

  // Opens the shell and waits for its prompt.
  void start(const std::vector<std::string>& options = {}) {
    open(options);
    terminal->wait_for_row(kPrompt);
  }

  void run(const std::string& line, const std::string& row) {
    terminal->type(line + "\n");
    terminal->wait_for_row(row);
    terminal->wait_for_cursor(kPrompt);
  }

  void type(const std::string& keys, const std::string& cursor) {
    terminal->type(keys);
    terminal->wait_for_cursor(cursor);
  }

  int end() {
    terminal->type(kEnd);
    return terminal->exit_status();
  }

  // Waits until the daemon has found the modem, which sends indications only to clients.
  void wait_until_serving() { run("get-ddtm", "get-ddtm (0x020000B7): success"); }

  std::string history_path() const {
    return handset.phone().folder() + "/.local/state/qorextctl/history";
  }

  Handset handset{Handset::off};
  std::optional<Terminal> terminal;
};

TEST_F(Shell, RunsLinesAndReportsTheDaemonsExitStatus) {
  start();
  run("nv-read rde-id=28", "  data:    06");
  run("nv-raed", "did you mean 'nv-read'?");
  EXPECT_EQ(end(), 0);
  EXPECT_THAT(terminal->screen().rows(), Contains("daemon ended with exit status 0"));
}

TEST_F(Shell, CompletesNamesArgumentsAndValues) {
  start();
  type(std::string("nv-re") + kTab, "qorext> nv-read");
  type(std::string("rd") + kTab, "qorext> nv-read rde-id=");
  run("28", "  data:    06");
  terminal->type(std::string("set-dd") + kTab + kTab);
  terminal->wait_for_row("set-ddtm-2               set-ddtm by its second id");
  terminal->wait_for_cursor("qorext> set-ddtm");
  terminal->type(std::string(" dd") + kTab + kTab);
  terminal->wait_for_row("ddtm=0");
  terminal->wait_for_cursor("qorext> set-ddtm ddtm=");
  run("1", "set-ddtm (0x020000B8): success");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, CompletesTheKeysOfTheModemsState) {
  start();
  terminal->type(std::string("mo") + kTab + "set" + kTab + "lte.rsr" + kTab + kTab);
  terminal->wait_for_row("lte.rsrq=  lte.rsrp=");
  terminal->wait_for_cursor("qorext> modem set lte.rsr");
  run("p=-101", "modem set: ok");
  EXPECT_EQ(handset.modem().value("state", "/state/lte/rsrp"), "-101");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, KeepsHistoryForTheNextRun) {
  start();
  run("set-bsr-timer timer=77", "set-bsr-timer (0x020000BD): success");
  run("get-bsr-timer", "timer:  77");
  EXPECT_EQ(end(), 0);
  start();
  type(std::string(kUp) + kUp, "qorext> set-bsr-timer timer=77");
  type(kCancel, kPrompt);
  terminal->type(std::string(kSearch) + "get-bsr");
  terminal->wait_for_row("get-bsr-timer");
  terminal->type("\n");
  terminal->wait_for_row("timer:  77");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, KeepsAPrivateHistoryWithoutPersonalValues) {
  start();
  run("check-spc code=000000", "check-spc (0x0200000A)");
  run("get-ddtm", "ddtm:  0");
  EXPECT_EQ(end(), 0);
  EXPECT_EQ(content_of(history_path()), "get-ddtm\n");
  struct stat status {};
  ASSERT_EQ(stat(history_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(Shell, ShowsUnsolicitedFramesAboveTheInputLine) {
  start();
  wait_until_serving();
  type("nv-re", "qorext> nv-re");
  handset.indicate("notify");
  handset.indicate("pfp rat=3");
  terminal->wait_for_row("rat:              3");
  terminal->wait_for_cursor("qorext> nv-re");
  auto rows = terminal->screen().rows();
  EXPECT_EQ(std::count(rows.begin(), rows.end(), "qorext> nv-re"), 1);
  EXPECT_EQ(rows.back(), "qorext> nv-re");
  EXPECT_THAT(rows, Contains("unsolicited notify (0x00000457): 22 bytes"));
  run("ad rde-id=28", "  data:    06");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, KeepsAnInputLineOfMoreThanOneRowTogether) {
  start();
  wait_until_serving();
  std::string line = "nv-write rde-id=7000 data=" + std::string(120, 'a') + "0b";
  terminal->type(line);
  auto is_whole = [&](const Screen& screen) {
    auto rows = screen.rows();
    return rows.size() > 1 && rows[rows.size() - 2] + rows.back() == "qorext> " + line;
  };
  terminal->wait_for("the line", is_whole);
  handset.indicate("notify");
  terminal->wait_for_row("unsolicited notify");
  terminal->wait_for("the line below the frame", is_whole);
  auto rows = terminal->screen().rows();
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                          [](const std::string& row) { return row.rfind("qorext> nv-w", 0) == 0; }),
            1)
      << terminal->text();
  run("", "nv-write (0x02000015): success");
  EXPECT_EQ(handset.modem().value("nv 7000", "/data"), std::string(120, 'a') + "0b");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, ShowsTheLogAboveTheInputLine) {
  start({"--log"});
  terminal->wait_for_row("waiting for data");
  type("get-", "qorext> get-");
  handset.indicate("notify");
  terminal->wait_for_row("unsolicited notify");
  terminal->wait_for_cursor("qorext> get-");
  auto rows = terminal->screen().rows();
  EXPECT_EQ(std::count(rows.begin(), rows.end(), "qorext> get-"), 1) << terminal->text();
  terminal->type("ddtm\n");
  terminal->wait_for_row("ddtm:  0");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, ClearsTheLineAtCtrlC) {
  start();
  type("set-ddtm ddtm=1", "qorext> set-ddtm ddtm=1");
  type(kCancel, kPrompt);
  run("get-ddtm", "ddtm:  0");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, EndsAWaitAtCtrlCAndContinues) {
  start();
  wait_until_serving();
  for (const char* line :
       {"wait-unsol 9 3000", "wait-log nothing 1 3000", "wait-property none x 3000"}) {
    terminal->type(std::string(line) + "\n");
    terminal->wait_for_row(line);
    terminal->wait_for_cursor("");
    type(kCancel, kPrompt);
  }
  EXPECT_THAT(terminal->text(), HasSubstr("0 of 9 unsolicited frames came"));
  run("get-ddtm", "ddtm:  0");
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, MarksALateReply) {
  start();
  wait_until_serving();
  handset.modem().command("fault delay message=element_read delay_ms=1500 times=1");
  terminal->type("nv-read rde-id=28\n");
  terminal->wait_for_row("nv-read rde-id=28");
  terminal->wait_for_cursor("");
  terminal->type(kCancel);
  terminal->wait_for_row("no reply to nv-read before the interruption");
  terminal->wait_for_row("nv-read (0x02000016), late reply: success");
  terminal->wait_for_cursor(kPrompt);
  EXPECT_EQ(end(), 0);
}

TEST_F(Shell, ReportsTheEndOfTheDaemon) {
  open({"--daemon-program", "/bin/true"});
  EXPECT_EQ(terminal->exit_status(), 0);
  EXPECT_THAT(terminal->screen().rows(), Contains("daemon ended with exit status 0"));
}

TEST_F(Shell, ShowsTheProgressOfALoad) {
  terminal.emplace(
      std::vector<std::string>{QOREXT_BIN "/qorextctl", "--modem", handset.phone().modem(), "load",
                               "--count", "100", "--rate", "100", "--mix", "nv-read:3,unknown"},
      Terminal::Environment{});
  terminal->wait_for(
      "the bar", [](const Screen& screen) { return screen.row_of_cursor().rfind("[#", 0) == 0; });
  EXPECT_EQ(terminal->exit_status(), 0);
  EXPECT_THAT(terminal->text(), HasSubstr("100 requests in"));
  EXPECT_THAT(terminal->text(), Not(HasSubstr("[#")));
}

TEST_F(Shell, RunsAsASessionWithoutATerminal) {
  CommandResult result =
      run_command("HOME=/nonexistent $BIN/qorextctl --modem " + handset.phone().modem() + " shell",
                  "nv-raed\nnv-read rde-id=28\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("line 1: unknown request 'nv-raed'"));
  EXPECT_THAT(result.output, HasSubstr("  data:    06\ndaemon ended with exit status 0\n"));
  EXPECT_THAT(result.output, Not(HasSubstr(kPrompt)));
}

}  // namespace
}  // namespace e2e
