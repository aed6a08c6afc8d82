// SPDX-License-Identifier: Apache-2.0
// The tool with deeply nested, long or endless input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/phone_root.h"
#include "tests/unit/qorextctl/fake_modem.h"

namespace e2e {
namespace {

using std::chrono::steady_clock;
using testing::HasSubstr;

constexpr size_t kMany = 200'000;
// The time that a busy machine can add to the timeouts.
constexpr auto kMaxDelay = std::chrono::seconds(8);

class ForeignInput : public testing::Test {
 protected:
  std::string file(const std::string& name, const std::string& text) const {
    std::string path = folder_.folder() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  // A daemon that endlessly writes zeros to the descriptor that its argument names.
  std::string flood(const std::string& argument) const {
    std::string path =
        file("flood", "#!/bin/sh\nexec cat /dev/zero >/proc/self/fd/" + argument + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  PhoneRoot folder_;
};

const std::string kDeep = std::string(kMany, '[') + std::string(kMany, ']');

TEST_F(ForeignInput, ADeepRecordingCausesOneErrorAndStatus2) {
  std::string head = R"({"type":"recording","version":1,"started":"","instance":0,"masked":false})"
                     "\n";
  std::string frame = R"({"type":"frame","time":1,"kind":"reply","hex":"**","fields":)";
  std::string path = file("deep.jsonl", head + frame + kDeep + "}\n");
  for (std::string verb : {"replay ", "trace "}) {
    CommandResult result = run_tool(verb + path);
    EXPECT_EQ(result.status, 2) << verb;
    EXPECT_EQ(result.errors, "qorextctl: " + path + ": line 2: is nested deeper than 64 levels\n");
  }
}

TEST_F(ForeignInput, ADeepRecordCausesOneErrorAndStatus2) {
  std::string path = file("deep.json", "{\"fields\":" + kDeep + "}");
  CommandResult result = run_tool("request set-nam spc=000000 json=" + path);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(lines_of(result.errors).size(), 1U);
  EXPECT_THAT(result.errors, HasSubstr("the record is nested deeper than 64 levels"));
}

TEST_F(ForeignInput, ADeepAnswerOfAControlSocketCausesOneErrorAndStatus3) {
  qorextctl::FakeModem modem(R"({"ok":true,"state":)" + kDeep + "}\n");
  CommandResult result = run_tool("--control " + modem.path() + " modem state");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(lines_of(result.errors).size(), 1U);
  EXPECT_THAT(result.errors, HasSubstr("the answer is nested deeper than 64 levels"));
}

TEST_F(ForeignInput, DeepArgumentsCauseOneErrorEachAndTheSessionContinues) {
  std::string path;
  for (size_t i = 0; i < kMany; ++i) path += "a.";
  CommandResult result = run_tool(
      "session", "modem set lte=" + kDeep + "\nmodem set " + path + "a=1\nnv-read rde-id=28\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(lines_of(result.errors).size(), 2U) << result.errors.substr(0, 1000);
  EXPECT_THAT(result.output, HasSubstr("nv-read (0x02000016): success"));
}

TEST_F(ForeignInput, AnEndlessLineCausesOneErrorAndTheNextLinesAreDecoded) {
  CommandResult result = run_command(
      "{ printf 'E/RIL-QOREXT( 1): isSpcChanged = 0, (246810 ~ '; "
      "head -c 300000000 /dev/zero | tr '\\0' 7; printf '\\n01050019 00000000\\n'; } "
      "| $BIN/qorextctl decode");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "request silent-reboot (0x050019)\n");
  EXPECT_EQ(result.errors, "qorextctl: decode: line 1: is longer than 1048576 bytes, skipped\n");
}

TEST_F(ForeignInput, AFloodOfUnsolicitedFramesEndsWithTheTimeout) {
  auto start = steady_clock::now();
  CommandResult result =
      run_tool("--timeout 0.5 --daemon-program " + flood("$3") + " request get-nam >/dev/null");
  EXPECT_LT(steady_clock::now() - start, kMaxDelay);
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.errors, HasSubstr("no reply to get-nam within 0.5 s"));
}

TEST_F(ForeignInput, AFloodOfRepliesEndsWithTheTimeout) {
  auto start = steady_clock::now();
  CommandResult result =
      run_tool("--timeout 0.5 --daemon-program " + flood("$2") + " session", "wait-unsol 1 0.5\n");
  EXPECT_LT(steady_clock::now() - start, kMaxDelay);
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.errors, HasSubstr("0 of 1 unsolicited frames came within 0.5 s"));
  EXPECT_LT(result.errors.size(), 20000U);
}

}  // namespace
}  // namespace e2e
