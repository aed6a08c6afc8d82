// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/cli/cli.h"

#include "tests/unit/platform/temp_folder.h"
#include "tests/unit/qorextctl/fake_modem.h"
#include "tests/unit/qorextctl/fake_setup.h"
#include "tools/qorextctl/run.h"

namespace qorextctl {
namespace {

using Words = std::vector<std::string>;

class CommandLine : public WithFakeDaemon {
 protected:
  static Parsed parse(std::vector<const char*> words) {
    words.insert(words.begin(), "qorextctl");
    return parse_command_line(static_cast<int>(words.size()), words.data());
  }

  static Options options_of(const std::vector<const char*>& words) {
    Parsed parsed = parse(words);
    EXPECT_FALSE(parsed.error) << parsed.error->message;
    return parsed.options;
  }

  // The exit status of the whole program.
  int run_words(std::vector<const char*> words, bool json = false) {
    words.insert(words.end(), {"--daemon-program", FAKE_DAEMON, "--modem", "unix:/m"});
    Printer printer(out_, err_, json);
    return run(options_of(words), printer);
  }
};

TEST_F(CommandLine, HasTheDefaultsOfTheHelp) {
  Options options = options_of({"list"});
  EXPECT_EQ(options.verb, Verb::list);
  EXPECT_EQ(options.timeout, 20);
  EXPECT_EQ(options.instance, 0u);
  EXPECT_FALSE(options.json);
  EXPECT_EQ(options.setup.modem, "");
}

TEST_F(CommandLine, OptionsMayFollowTheCommand) {
  Options options =
      options_of({"request", "nv-read", "rde-id=28", "--json", "--timeout", "0.5", "--log",
                  "--instance", "1", "--modem", "qrtr", "--phone-root", "/tmp"});
  EXPECT_EQ(options.verb, Verb::request);
  EXPECT_EQ(options.words, (Words{"nv-read", "rde-id=28"}));
  EXPECT_TRUE(options.json);
  EXPECT_TRUE(options.log);
  EXPECT_EQ(options.timeout, 0.5);
  EXPECT_EQ(options.setup.timeout_seconds, 0.5);
  EXPECT_EQ(options.instance, 1u);
  EXPECT_EQ(options.setup.modem, "qrtr");
  EXPECT_EQ(options.setup.phone_root, "/tmp");
}

TEST_F(CommandLine, OptionsOfAModemCommandStayAmongItsWords) {
  Options burst = options_of({"modem", "indicate", "notify", "--count", "3"});
  EXPECT_EQ(burst.words, (Words{"indicate", "notify", "--count", "3"}));
  Options kpi =
      options_of({"modem", "kpi", "--file", "log", "--reorder", "--headerless", "--json"});
  EXPECT_TRUE(kpi.json);
  EXPECT_EQ(kpi.words, (Words{"kpi", "--file", "log", "--headerless", "--reorder"}));
}

TEST_F(CommandLine, OptionsSetTheFilesOfAPhone) {
  Options options = options_of({"phone", "--phone-root", "/no/such/yet", "--modem-restarts", "2",
                                "--ssr-reason", "fatal error", "--hob-seed", "7"});
  EXPECT_EQ(options.phone.modem_restarts, "2");
  EXPECT_EQ(options.phone.ssr_reason, "fatal error");
  EXPECT_EQ(options.phone.hob_seed, 7U);
}

TEST_F(CommandLine, HelpAndVersionSucceed) {
  Parsed help = parse({"--help"});
  EXPECT_FALSE(help.error);
  for (const char* part : {"examples:", "exit status:", "session", "--timeout"}) {
    EXPECT_NE(help.text.find(part), std::string::npos) << part;
  }
  Parsed version = parse({"--version"});
  EXPECT_FALSE(version.error);
  EXPECT_EQ(version.text.substr(0, 10), "qorextctl ");
  EXPECT_NE(parse({"modem", "--help"}).text.find("clear_faults"), std::string::npos);
}

TEST_F(CommandLine, TheHelpOfEachCommandHasExamplesAndExitStatuses) {
  for (const char* verb : {"request", "raw", "session", "shell", "load", "list", "decode", "modem",
                           "phone", "record", "replay", "trace"}) {
    std::string help = parse({verb, "--help"}).text;
    for (const char* part : {"examples:\n  ", "qorextctl", "exit status:\n  0  success"}) {
      EXPECT_NE(help.find(part), std::string::npos) << verb << " " << part;
    }
  }
}

TEST_F(CommandLine, AWrongCommandLineKeepsTheJsonOption) {
  EXPECT_TRUE(parse({"frob", "--json"}).options.json);
  EXPECT_FALSE(parse({"frob"}).options.json);
}

TEST_F(CommandLine, DecodeHasItsOwnOptions) {
  Options options = options_of({"decode", "--as", "unsolicited", "--input", "f", "--show-personal",
                                "--color", "never", "01", "02"});
  EXPECT_EQ(options.verb, Verb::decode);
  EXPECT_EQ(options.words, (Words{"01", "02"}));
  EXPECT_EQ(options.decode.as, InputKind::unsolicited);
  EXPECT_EQ(options.decode.input, "f");
  EXPECT_TRUE(options.show_personal);
  EXPECT_EQ(options.colour, ColourWhen::never);
  EXPECT_FALSE(options_of({"decode"}).show_personal);
}

TEST_F(CommandLine, RecordReplayAndTraceTakeAFile) {
  Options record = options_of({"record", "--output", "r.jsonl", "--control", "/c"});
  EXPECT_EQ(record.verb, Verb::record);
  EXPECT_EQ(record.output, "r.jsonl");
  Options trace = options_of({"trace", "r.jsonl"});
  EXPECT_EQ(trace.verb, Verb::trace);
  EXPECT_EQ(trace.words, Words{"r.jsonl"});
  EXPECT_EQ(options_of({"replay", "r.jsonl"}).verb, Verb::replay);
}

TEST_F(CommandLine, AReplayRefusesAModem) {
  test_support::TempFolder folder;
  std::string path = folder / "r.jsonl";
  std::ofstream(path)
      << R"({"type":"recording","version":1,"started":"","instance":0,"masked":false})" << '\n';
  EXPECT_EQ(run_words({"replay", path.c_str()}), 2);
  EXPECT_EQ(err_.str(), "qorextctl: replay: --modem is not allowed, the recording is the modem\n");
}

// clang-format off
const std::vector<const char*> kWrong[] = {
    {}, {"frob"}, {"request"}, {"raw"}, {"modem"}, {"record"}, {"replay"}, {"replay", "a", "b"},
    {"list", "a", "b"}, {"list", "--timeout", "0"}, {"list", "--timeout", "x"}, {"list", "--timeout", "1e9"},
    {"list", "--modem", "tcp:1"}, {"list", "--modem", "unix:"}, {"list", "--frob"}, {"list", "--instance", "-1"},
    {"list", "--scenario", "/nowhere"}, {"list", "--color", "pink"}, {"decode", "--as", "bogus"},
    {"trace", "--output", "a"}, {"phone", "show"}, {"--phone-root", "/no/such/yet", "session"},
};
// clang-format on

TEST_F(CommandLine, WrongUsageIsOneLineAndStatus2) {
  for (const std::vector<const char*>& words : kWrong) {
    Parsed parsed = parse(words);
    ASSERT_TRUE(parsed.error);
    EXPECT_EQ(parsed.text, "");
    EXPECT_EQ(parsed.error->outcome, Outcome::usage);
    EXPECT_EQ(parsed.error->message.find('\n'), std::string::npos) << parsed.error->message;
    EXPECT_NE(parsed.error->message.find("(see: qorextctl --help)"), std::string::npos);
  }
}

TEST_F(CommandLine, ARequestPrintsItsReplyAndSetsTheExitStatus) {
  set_mode("answer");
  EXPECT_EQ(run_words({"request", "set-ddtm", "ddtm=1"}), 0);
  EXPECT_EQ(out_.str(), "set-ddtm (0x020000B8): success\n");
  EXPECT_EQ(err_.str(), "");
  out_.str("");
  set_mode("refuse");
  EXPECT_EQ(run_words({"request", "set-ddtm", "ddtm=1"}, true), 1);
  EXPECT_EQ(Json::parse(out_.str())["status"], 5);
  set_mode("silent");
  EXPECT_EQ(run_words({"request", "get-ddtm", "--timeout", "0.05"}), 3);
}

TEST_F(CommandLine, AWrongRequestStartsNothing) {
  set_mode("answer");
  EXPECT_EQ(run_words({"request", "set-ddtm"}), 2);
  EXPECT_EQ(err_.str(),
            "qorextctl: set-ddtm: ddtm (preference value) is missing (see: qorextctl list "
            "set-ddtm)\n");
  EXPECT_EQ(run_words({"raw", "0g"}), 2);
}

TEST_F(CommandLine, RawShowsTheReplyAlsoAsHex) {
  set_mode("answer");
  EXPECT_EQ(run_words({"raw", "B8000002", "00000000"}), 0);
  EXPECT_EQ(out_.str(),
            "set-ddtm (0x020000B8): success\n"
            "  hex: B800000200000000000000000000000000000000\n");
}

TEST_F(CommandLine, TheListContainsAllRequestsAndRejectsUnknownOnes) {
  EXPECT_EQ(run_words({"list"}), 0);
  for (const Request& request : catalogue()) {
    EXPECT_NE(out_.str().find(std::string(request.name) + " "), std::string::npos) << request.name;
  }
  EXPECT_EQ(run_words({"list", "frob"}), 2);
  EXPECT_EQ(err_.str(), "qorextctl: unknown request 'frob' (see: qorextctl list)\n");
}

TEST_F(CommandLine, AModemCommandNeedsNoDaemon) {
  FakeModem modem("{\"ok\":true,\"version\":\"1\"}\n");
  EXPECT_EQ(run_words({"--control", modem.path().c_str(), "modem", "version"}, true), 0);
  EXPECT_EQ(out_.str(), R"({"type":"modem","command":"version","answer":{"ok":true,"version":"1"}})"
                        "\n");
  EXPECT_EQ(run_words({"--control", "/nowhere/c", "modem", "version"}), 3);
  EXPECT_EQ(run_words({"modem", "version"}), 2);
}

}  // namespace
}  // namespace qorextctl
