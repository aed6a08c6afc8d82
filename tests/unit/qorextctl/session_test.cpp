// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/session.h"

#include "tests/unit/platform/temp_folder.h"
#include "tests/unit/qorextctl/fake_modem.h"
#include "tests/unit/qorextctl/fake_setup.h"

namespace qorextctl {
namespace {

class SessionWith : public WithFakeDaemon {
 protected:
  SessionWith() {
    options_.daemon_executable = FAKE_DAEMON;
    options_.setup.modem = "unix:/m";
    options_.timeout = 10;
  }

  Outcome run(const char* mode, const std::string& lines) {
    out_.str("");
    err_.str("");
    set_mode(mode);
    auto session = Session::start(options_, printer_);
    EXPECT_TRUE(session) << session.error().message;
    auto input = make_pipe();
    EXPECT_EQ(write(input->write.get(), lines.data(), lines.size()),
              static_cast<ssize_t>(lines.size()));
    input->write.reset();
    Outcome outcome = (*session)->run_lines(input->read.get());
    return (*session)->finish(outcome, true);
  }

  LaunchOptions options_;
};

TEST_F(SessionWith, RunsLinesInOrderAndReportsTheEnd) {
  EXPECT_EQ(run("answer",
                "# a comment\n\nset-ddtm ddtm=1\n  raw B8000002 00000000 # more\nset-ddtm ddtm=0"),
            Outcome::success);
  EXPECT_EQ(out_.str(),
            "set-ddtm (0x020000B8): success\n"
            "set-ddtm (0x020000B8): success\n"
            "set-ddtm (0x020000B8): success\n"
            "daemon ended with exit status 0\n");
  EXPECT_EQ(err_.str(), "");
}

struct SessionCase {
  const char* mode;
  const char* lines;
  Outcome outcome;
  const char* output;
  const char* errors;
};

// clang-format off
const SessionCase kSessionCases[] = {
    {"answer", "frob\nset-ddtm ddtm=1\nraw 0g\nset-ddtm 'x\nwait-unsol 0\nwait-unsol 1 2 3\n", Outcome::usage,
     "set-ddtm (0x020000B8): success\n"
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: unknown request 'frob' (see: qorextctl list)\n"
     "qorextctl: line 3: raw: the words are not hex (pairs of digits)\n"
     "qorextctl: line 4: a quote is not closed\n"
     "qorextctl: line 5: wait-unsol: 0 is out of range (1 to 1000000)\n"
     "qorextctl: line 6: wait-unsol: expected [N] [SECONDS]\n"},
    {"answer", "wait-log 'no such line' 2 0.01\nwait-log\nwait-log x 1 x\n", Outcome::transport,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: 0 of 2 lines with 'no such line' came in the log\n"
     "qorextctl: line 2: wait-log: expected TEXT [N] [SECONDS]\n"
     "qorextctl: line 3: wait-log: 'x' is not a number\n"},
    {"answer", "wait-property no.such 1 0.01\nwait-property x\n", Outcome::transport,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: property no.such is not set\n"
     "qorextctl: line 2: wait-property: expected NAME VALUE [SECONDS]\n"},
    {"answer", "wait-log x 0\nwait-property a b -1\n", Outcome::usage,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: wait-log: 0 is out of range (1 to 9223372036854775807)\n"
     "qorextctl: line 2: wait-property: -1 is out of range (0 to 86400 s)\n"},
    {"refuse", "expect-failure set-ddtm ddtm=1\n", Outcome::success,
     "set-ddtm (0x020000B8): failure\n"
     "daemon ended with exit status 0\n", ""},
    {"answer", "expect-failure set-ddtm ddtm=1\nset-ddtm ddtm=1\n", Outcome::refused,
     "set-ddtm (0x020000B8): success\n"
     "set-ddtm (0x020000B8): success\n"
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: set-ddtm: succeeded, expected a failure\n"},
    {"answer", "expect-failure\nexpect-failure frob\n", Outcome::usage,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: expect-failure: expected LINE\n"
     "qorextctl: line 2: unknown request 'frob' (see: qorextctl list)\n"},
    {"end", "expect-failure set-ddtm ddtm=1\n", Outcome::transport,
     "daemon ended with exit status 3\n",
     "qorextctl: no reply to set-ddtm: the daemon ended with exit status 3\n"},
    {"end", "set-ddtm ddtm=1\nset-ddtm ddtm=1\n", Outcome::transport,
     "daemon ended with exit status 3\n",
     "qorextctl: no reply to set-ddtm: the daemon ended with exit status 3\n"},
    {"answer", "help set-bsr-timer\nhelp get-bsr-timer\nhelp wait-log\n", Outcome::success,
     "set-bsr-timer         0x020000BD  set the better service reselection timer\n"
     "  timer=           timer value (0 to 4294967295; required)\n"
     "get-bsr-timer         0x020000BC  better service reselection timer\n"
     "reply:\n"
     "  timer                u32\n"
     "  wait-log TEXT [N] [SECONDS]             wait for N lines with the text in the daemon's log\n"
     "daemon ended with exit status 0\n", ""},
    {"answer", "help nv-raed\nhelp a b\n", Outcome::usage,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: unknown request 'nv-raed'; did you mean 'nv-read'? (see: qorextctl list)\n"
     "qorextctl: line 2: help: expected [NAME]\n"},
    {"answer", "wait-unsol 1 0.02\n", Outcome::transport,
     "daemon ended with exit status 0\n",
     "qorextctl: 0 of 1 unsolicited frames came within 0.02 s\n"},
    {"answer", "phone\nmodem state\n", Outcome::usage,
     "daemon ended with exit status 0\n",
     "qorextctl: line 1: phone: expected show\n"
     "qorextctl: line 2: modem: give --control PATH, the modem's control socket\n"},
};
// clang-format on

TEST_F(SessionWith, EachLineHasItsOutputAndItsErrors) {
  for (const SessionCase& test : kSessionCases) {
    EXPECT_EQ(run(test.mode, test.lines), test.outcome) << test.lines;
    EXPECT_EQ(out_.str(), test.output) << test.lines;
    EXPECT_EQ(err_.str().substr(0, err_.str().find("the daemon's log, ")), test.errors);
  }
}

TEST_F(SessionWith, WaitsForAPropertyAndShowsIt) {
  test_support::TempFolder root;
  std::filesystem::create_directories(root / "dev/__properties__");
  std::ofstream(root / "dev/__properties__/ril.baseband.rfcable.status") << "1";
  options_.setup.phone_root = root.path();
  EXPECT_EQ(run("answer", "wait-property ril.baseband.rfcable.status 1\n"), Outcome::success);
  EXPECT_EQ(out_.str(),
            "property ril.baseband.rfcable.status: 1\n"
            "daemon ended with exit status 0\n");
}

TEST_F(SessionWith, HelpShowsAllLines) {
  EXPECT_EQ(run("answer", "help\n"), Outcome::success);
  for (const LineCommand& command : Session::commands()) {
    EXPECT_NE(out_.str().find(command.help), std::string::npos) << command.name;
  }
  for (const Request& request : catalogue()) {
    EXPECT_NE(out_.str().find(request.description), std::string::npos) << request.name;
  }
}

TEST_F(SessionWith, WaitsForUnsolicitedFrames) {
  EXPECT_EQ(run("notify", "set-ddtm ddtm=1\nwait-unsol 2 5\n"), Outcome::success);
}

TEST_F(SessionWith, ShowsTheLogAfterAFailure) {
  EXPECT_EQ(run("refuse", "set-ddtm ddtm=1\n"), Outcome::refused);
  EXPECT_NE(err_.str().find("the daemon's log, last 1 of 1 lines:\n  arguments "),
            std::string::npos);
}

TEST_F(SessionWith, ShowsTheLogImmediatelyOnRequest) {
  options_.log = true;
  EXPECT_EQ(run("answer", "set-ddtm ddtm=1\n"), Outcome::success);
  EXPECT_EQ(err_.str().substr(0, 10), "arguments ");
}

TEST_F(SessionWith, SendsCommandsToTheModem) {
  FakeModem modem("{\"ok\":true}\n");
  options_.setup.control = modem.path();
  EXPECT_EQ(run("answer", "modem indicate notify --count 2\n"), Outcome::success);
  EXPECT_EQ(modem.received(),
            R"({"command":"indicate","indication":"notify","count":2,"fields":{}})");
  EXPECT_EQ(out_.str(), "modem indicate: ok\ndaemon ended with exit status 0\n");
}

TEST_F(SessionWith, AModemCommandMayBeRefused) {
  FakeModem modem("{\"ok\":false,\"error\":\"no\"}\n");
  options_.setup.control = modem.path();
  EXPECT_EQ(run("answer", "modem state\n"), Outcome::refused);
}

TEST_F(SessionWith, RemovesThePrivateFolder) {
  std::string root;
  {
    auto setup = Setup::create(options_.setup);
    ASSERT_TRUE(setup) << setup.error().message;
    root = (*setup)->phone_root();
    EXPECT_TRUE(std::filesystem::is_directory(root + "/data"));
    EXPECT_EQ((*setup)->control(), "");
  }
  EXPECT_FALSE(std::filesystem::exists(root));
}

TEST_F(SessionWith, AModemThatEndsImmediatelyIsATransportError) {
  options_.setup.modem = "";
  options_.setup.modem_executable = "/bin/false";
  auto session = Session::start(options_, printer_);
  ASSERT_FALSE(session);
  EXPECT_EQ(session.error().outcome, Outcome::transport);
  EXPECT_EQ(session.error().message, "the private modem ended with exit status 1: ");
}

}  // namespace
}  // namespace qorextctl
