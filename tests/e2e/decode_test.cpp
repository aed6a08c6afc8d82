// SPDX-License-Identifier: Apache-2.0
// The tool decodes the log of a real run.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "tests/e2e/support/command.h"
#include "tools/qorextctl/log/log_line.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kSession =
    "nv-write rde-id=7000 data=C0FFEE\n"
    "nv-read rde-id=7000\n"
    "read-item-10003\n"
    "set-nam spc=000000 new-spc=271828 mdn=9175553846 min=9175553846 sid=4139 imsi-11-12=26 "
    "imsi-mcc=310 imsi-t-mcc=310 imsi-t=310269175553846\n"
    "get-nam\n"
    "nv-read rde-id=8\n"
    "nv-read rde-id=25\n"
    "nv-read rde-id=32\n"
    "nv-write rde-id=32 data=323731383238\n"
    "check-spc code=246810\n"
    "verify-subsidy-lock code=246810\n"
    "write-akey spc=271828 akey=13572468013572468013572468\n"
    "data-plmn\n"
    "tune data=0A0B0C\n"
    "get-call-processing\n"
    "get-evdo\n";

// As text, as the hex of the text, in the encoding of the NV items, and as logged numbers.
constexpr const char* kSecrets[] = {"9175553846",
                                    "39313735353533383436",
                                    "09010705050503080406",
                                    "7278303",
                                    "DF0E6F00",
                                    "271828",
                                    "323731383238",
                                    "246810",
                                    "323436383130",
                                    "1357246801",
                                    "31333537323436383031"};

class DecodedLog : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    CommandResult result = run_tool("--log --show-personal session", kSession);
    EXPECT_EQ(result.status, 0) << result.output;
    log_ = result.errors;
  }

  static std::string log_;  // as the log library wrote it

  // The daemon's lines with another head.
  static std::string log_in(const std::string& head) {
    std::string log;
    for (const std::string& line : lines_of(log_)) {
      auto parsed = qorextctl::parse_daemon_line(line);
      if (parsed) log.append(head).append(parsed->text).append("\n");
    }
    return log;
  }

  // The daemon's lines without their heads, which contain the time.
  static std::vector<std::string> texts_in(const std::string& log) {
    std::vector<std::string> texts;
    for (const std::string& line : lines_of(log)) {
      if (auto parsed = qorextctl::parse_daemon_line(line)) texts.emplace_back(parsed->text);
    }
    return texts;
  }

  static CommandResult decode(const std::string& log, const std::string& options = "") {
    return run_tool("decode " + options, log);
  }

  static std::vector<std::string> decoded_lines(const CommandResult& result) {
    std::vector<std::string> lines;
    for (const std::string& line : lines_of(result.output)) {
      if (line.find("  | ") == 0) lines.push_back(line);
    }
    return lines;
  }
};

std::string DecodedLog::log_;

TEST_F(DecodedLog, DecodesEveryDumpOfTheDaemon) {
  CommandResult result = decode(log_);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* line :
       {"  | nv-item unknown (7000): 3 bytes", "  |   data:  C0FFEE",
        "  | reply read-item-10003 (0x0200000D): success, 4 bytes", "  |   value:  30",
        "  | nv-item mdn (8): 17 bytes", "  |   mdn:    ***", "  | nv-item sid-nid (15): 81 bytes",
        "  | nv-item spc (32): 6 bytes", "  |   spc:  ***",
        "  | modem-response tune (0x05002A): 32 bytes", "  |   data:    0A0B0C",
        "  | engineering get-call-processing (0x02000011): 164 bytes",
        "  | engineering get-evdo (0x02000012): 52 bytes"}) {
    EXPECT_THAT(lines_of(result.output), Contains(line));
  }
  // This dump is longer than one line of the log library.
  EXPECT_THAT(result.output, HasSubstr("  | modem-response data-plmn (0x060001): "));
  for (const std::string& line : lines_of(result.output)) {
    if (line.find("problem:") != std::string::npos) {
      EXPECT_THAT(line, HasSubstr("568 expected"));
    }
  }
}

TEST_F(DecodedLog, KeepsEveryLineOfTheLog) {
  std::vector<std::string> kept;
  for (const std::string& line : lines_of(decode(log_, "--show-personal").output)) {
    if (line.find("  | ") != 0) kept.push_back(line);
  }
  EXPECT_THAT(kept, ElementsAreArray(lines_of(log_)));
}

TEST_F(DecodedLog, MasksSecretsByDefault) {
  std::string masked = decode(log_).output + decode(log_, "--json").output;
  std::string clear = decode(log_, "--show-personal").output;
  for (const char* secret : kSecrets) EXPECT_THAT(masked, Not(HasSubstr(secret)));
  for (const char* secret : {"9175553846", "271828", "323731383238", "7278303"}) {
    EXPECT_THAT(clear, HasSubstr(secret));
  }
  EXPECT_FALSE(std::regex_search(masked, std::regex("(mdn_number|nv output|IMSI[A-Z0-9_]*) +\\d")));
  EXPECT_TRUE(std::regex_search(clear, std::regex("mdn_number +\\d")));
}

TEST_F(DecodedLog, IsMaskedInASessionToo) {
  CommandResult result = run_tool("--log session", kSession);
  for (const char* secret : kSecrets) EXPECT_THAT(result.errors, Not(HasSubstr(secret)));
  EXPECT_EQ(texts_in(result.errors), texts_in(decode(log_).output));
}

TEST_F(DecodedLog, IsTheSameInEveryFormatOfLogcat) {
  auto expected = decoded_lines(decode(log_));
  ASSERT_GT(expected.size(), 100U);
  for (const char* head : {"E/RIL-QOREXT( 1234): ", "11-21 17:14:39.123 E/RIL-QOREXT( 1234): ",
                           "11-21 17:14:39.123  1234  1234 E RIL-QOREXT: "}) {
    CommandResult result = decode(log_in(head));
    EXPECT_EQ(result.status, 0) << head;
    EXPECT_THAT(decoded_lines(result), ElementsAreArray(expected)) << head;
    for (const char* secret : kSecrets) EXPECT_THAT(result.output, Not(HasSubstr(secret)));
  }
}

TEST_F(DecodedLog, IsOneJsonObjectPerLine) {
  auto lines = lines_of(decode(log_, "--json").output);
  EXPECT_EQ(lines.size(), lines_of(log_).size());
  for (const std::string& line : lines) EXPECT_THAT(line, HasSubstr(R"({"type":"log","line":")"));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("decoded":{"type":"nv-item","name":"mdn","id":"8")")));
}

TEST(Decode, ReadsARequestFromHex) {
  CommandResult result = run_tool(
      "decode 16000002 10000000 00000000 000000000000 1C000000 00000000 00000000 "
      "00000000");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "request nv-read (0x02000016): 16 bytes\n  rde-id:  28\n  record:  0\n  offset:  0\n"
            "  length:  0\n");
}

TEST(Decode, ReadsAReplyFromHex) {
  CommandResult direct = run_tool("--json request get-nam");
  ASSERT_EQ(direct.status, 0);
  std::smatch hex;
  ASSERT_TRUE(std::regex_search(direct.output, hex, std::regex("\"hex\":\"([0-9A-F]+)\"")));
  EXPECT_THAT(direct.output,
              HasSubstr(R"("min":"9135550142")"));  // not masked: the user asked the phone
  CommandResult masked = run_tool("decode", hex[1].str());
  EXPECT_THAT(lines_of(masked.output), Contains("  min:             ***"));
  EXPECT_THAT(lines_of(masked.output), Contains("  sid:             4700"));
  CommandResult clear = run_tool("--show-personal decode " + hex[1].str());
  EXPECT_THAT(lines_of(clear.output), Contains("  min:             9135550142"));
}

TEST(Conventions, ExitStatusesDistinguishUsageTransportAndOutput) {
  EXPECT_EQ(run_tool("decode XY").status, 2);
  EXPECT_EQ(run_tool("--control /nowhere modem state").status, 3);
  CommandResult full = run_tool("list >/dev/full");
  EXPECT_EQ(full.status, 4);
  EXPECT_EQ(lines_of(full.errors).size(), 1U);
  EXPECT_EQ(run_tool("--version").status, 0);
}

TEST(Conventions, AUsageErrorIsAJsonObject) {
  CommandResult result = run_tool("--json list --color pink");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, R"({"type":"error","outcome":2,"message":"--color: pink not in )"
                           "{always,auto,never} (see: qorextctl --help)\"}\n");
}

TEST(Conventions, OutputToAPipeHasNoColourByDefault) {
  const std::string line = "decode 0105001900000000";
  EXPECT_THAT(run_tool(line).output, Not(HasSubstr("\x1B")));
  EXPECT_THAT(run_tool(line + " --color=always").output, HasSubstr("\x1B[1m"));
}

}  // namespace
}  // namespace e2e
