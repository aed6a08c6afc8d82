// SPDX-License-Identifier: Apache-2.0
// Command-line completion in bash and zsh.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/terminal.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// The candidates that bash offers for a line with an incomplete last word.
std::vector<std::string> offered(const std::string& line) {
  CommandResult result =
      run_command("bash --norc -c 'source \"" QOREXT_COMPLETION
                  "/qorextctl.bash\"; COMP_LINE=$1; COMP_POINT=${#1}; _qorextctl; "
                  "printf \"%s\\n\" \"${COMPREPLY[@]}\"' - \"$BIN/" +
                  line + "\"");
  EXPECT_EQ(result.errors, "");
  auto lines = lines_of(result.output);
  return lines == std::vector<std::string>{""} ? std::vector<std::string>() : lines;
}

TEST(BashCompletion, OffersCommandsAndOptions) {
  EXPECT_THAT(offered("qorextctl re"), ElementsAre("request", "record", "replay"));
  EXPECT_THAT(offered("qorextctl --time"), ElementsAre("--timeout"));
  EXPECT_THAT(offered("qorextctl --json load --"), Contains("--mix-file"));
  EXPECT_THAT(offered("qorextctl --json load --"), Contains("--timeout"));
  EXPECT_THAT(offered("qorext_modem --"), Contains("--scenario"));
}

TEST(BashCompletion, OffersRequestsArgumentsAndValues) {
  EXPECT_THAT(offered("qorextctl request nv-"), ElementsAre("nv-read", "nv-write"));
  EXPECT_THAT(offered("qorextctl list get-na"), ElementsAre("get-nam"));
  EXPECT_THAT(offered("qorextctl --timeout 5 request nv-read r"),
              ElementsAre("rde-id=", "record="));
  EXPECT_THAT(offered("qorextctl request set-ddtm ddtm="), ElementsAre("1", "0"));
  EXPECT_THAT(offered("qorextctl modem faul"), ElementsAre("fault", "faults"));
  EXPECT_THAT(offered("qorextctl phone "), ElementsAre("prepare", "show"));
}

TEST(BashCompletion, OffersTheValuesOfOptions) {
  EXPECT_THAT(offered("qorextctl --color a"), ElementsAre("always", "auto"));
  EXPECT_THAT(offered("qorextctl decode --as "),
              UnorderedElementsAre("request", "reply", "unsolicited", "log"));
  EXPECT_THAT(offered("qorextctl --modem uni"), ElementsAre("unix:"));
  EXPECT_THAT(offered("qorextctl --scenario " QOREXT_COMPLETION "/qor"),
              ElementsAre(QOREXT_COMPLETION "/qorextctl.bash"));
}

TEST(BashCompletion, OffersNothingForAnUnknownWord) {
  EXPECT_THAT(offered("qorextctl frob"), IsEmpty());
  EXPECT_THAT(offered("qorextctl load --count "), IsEmpty());
  EXPECT_THAT(offered("qorextctl raw "), IsEmpty());
  EXPECT_THAT(offered("qorextctl list get-nam "), IsEmpty());
  EXPECT_THAT(offered("qorextctl request frob x"), IsEmpty());
}

constexpr const char* kFirstPrompt = "ready>";
const Terminal::Environment kEnvironment = {
    {"HOME", "/nonexistent"}, {"PATH", "/usr/bin:/bin"}, {"PS1", "ready> "}};

// Loads the completion into a shell without user settings. The shell can misread keys typed before
// its first prompt.
void expect_completion(Terminal& shell, const std::string& preparation, const std::string& prompt) {
  shell.wait_for_cursor(kFirstPrompt);
  shell.type("PS1='" + prompt + " '; cd " QOREXT_BIN "; PATH=" QOREXT_BIN ":$PATH; " + preparation +
             "\n");
  shell.wait_for_cursor(prompt);
  shell.type(std::string("qorextctl requ") + kTab + "nv-re" + kTab + "rde" + kTab + "28");
  shell.wait_for_cursor(prompt + " qorextctl request nv-read rde-id=28");
  shell.type("\n");
  shell.wait_for_row("  data:    06");
  shell.wait_for_cursor(prompt);
  shell.type(std::string("qorext_modem --scen") + kTab);
  shell.wait_for_cursor(prompt + " qorext_modem --scenario");
  shell.type("\nexit 0\n");
}

TEST(BashCompletion, WorksAtATerminal) {
  Terminal shell({"/bin/bash", "--norc", "-i"}, kEnvironment);
  expect_completion(shell, "source " QOREXT_COMPLETION "/qorextctl.bash", "bash>");
}

TEST(ZshCompletion, WorksAtATerminal) {
  Terminal shell({"/bin/zsh", "-f", "-i"}, kEnvironment);
  expect_completion(
      shell, "fpath=(" QOREXT_COMPLETION " $fpath); autoload -U compinit; compinit -D -u", "zsh>");
}

TEST(ZshCompletion, DescribesTheCandidates) {
  Terminal shell({"/bin/zsh", "-f", "-i"}, kEnvironment);
  shell.wait_for_cursor(kFirstPrompt);
  shell.type("PS1='zsh> '; PATH=" QOREXT_BIN ":$PATH; fpath=(" QOREXT_COMPLETION
             " $fpath); autoload -U compinit; compinit -D -u\n");
  shell.wait_for_cursor("zsh>");
  shell.type(std::string("qorextctl request nv-") + kTab);
  shell.wait_for_row("nv-read  -- read an NV item");
  shell.wait_for_row("nv-write  -- write an NV item");
}

}  // namespace
}  // namespace e2e
