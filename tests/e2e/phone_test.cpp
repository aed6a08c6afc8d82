// SPDX-License-Identifier: Apache-2.0
// The tool's commands for KPI uploads, HOB saves and the phone's root.

#include <filesystem>
#include <fstream>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/vorn.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::HasSubstr;

constexpr const char* kMerged = "vorn_update_current_log: update";
constexpr size_t kPackageBytes = size_t{255} * 502;

class Uploads : public testing::Test {
 protected:
  // Uploads the log and waits until its packages are in the current log file.
  void upload(const std::string& log, const std::string& options, size_t packages) {
    start_upload(log, options);
    wait_for_merges(packages);
  }
  void start_upload(const std::string& log, const std::string& options) {
    std::string path = handset.phone().folder() + "/upload";
    std::ofstream(path, std::ios::binary) << log;
    handset.modem().command("kpi --file " + path + " " + options);
  }
  void wait_for_merges(size_t count) {
    for (; count != 0; --count) {
      auto found = handset.daemon().log().find(kMerged, next_line_, time_limit());
      ASSERT_TRUE(found.has_value()) << count << " packages are missing";
      next_line_ = *found + 1;
    }
  }
  std::string current_log() {
    std::string folder = handset.phone().folder();
    return content_of(folder + fs::read_symlink(folder + "/data/vorn/.0001").string());
  }

  Handset handset;

 private:
  size_t next_line_ = 0;
};

TEST_F(Uploads, ALogOfOnePackageArrivesByteForByte) {
  std::string log = random_log(kPackageBytes);
  upload(log, "--package 7", 1);
  EXPECT_EQ(current_log(), log);
}

TEST_F(Uploads, ALongerLogArrivesInConsecutivePackages) {
  std::string log = random_log(2 * kPackageBytes + 1);
  upload(log, "--package 255", 3);
  EXPECT_EQ(current_log(), log);
  auto texts = handset.log().texts();
  for (const char* id : {"255", "0", "1"}) {
    EXPECT_THAT(texts, Contains(std::string("vornIndHndlr: received the last pkg of ") + id));
  }
}

TEST_F(Uploads, PackagesWithoutHeaderKeepEveryByte) {
  constexpr size_t kOneByteTooMany = 255 * 5 + 1;  // would make the last package too short
  std::string log = random_log(kOneByteTooMany);
  upload(log, "--headerless --packet-size 5", 2);
  EXPECT_EQ(current_log(), log);
}

TEST_F(Uploads, ALostPacketLosesTheNextOneToo) {
  upload("aabbccddeeff", "--packet-size 2 --lose 3", 1);
  EXPECT_EQ(current_log(), "aabbeeff");
}

TEST_F(Uploads, TheModemServesRequestsDuringAnUpload) {
  std::string log = random_log(20 * kPackageBytes);
  start_upload(log, "--no-wait");
  handset.serve(cdma(0x020000BD, le32(42)));
  EXPECT_EQ(handset.modem().value("state", "/state/carrier/bsr_timer"), "42");
  wait_for_merges(20);
  EXPECT_EQ(current_log(), log);
}

// Only the current and the previous log exist, so the test checks them after each of two rotations.
TEST_F(Uploads, SixtyFourMebibytesArriveByteForByteOverTwoRotations) {
  constexpr size_t kFirstPart = size_t{40} << 20;
  VornFolder vorn(handset.phone());
  std::string log = random_log(size_t{64} << 20);
  upload(log.substr(0, kFirstPart), "", (kFirstPart - 1) / kPackageBytes + 1);
  std::string first = vorn.content(vorn.linked(2));
  std::string second = vorn.content(vorn.linked(1));
  EXPECT_LT(first.size(), kLogLimit);
  EXPECT_GE(first.size() + kPackageBytes, kLogLimit);
  EXPECT_TRUE(first + second == log.substr(0, kFirstPart));

  upload(log.substr(kFirstPart), "", (log.size() - kFirstPart - 1) / kPackageBytes + 1);
  EXPECT_TRUE(first + vorn.content(vorn.linked(2)) + vorn.content(vorn.linked(1)) == log);
}

TEST(Saves, TheBlockIsCopiedToThePartition) {
  Handset handset;
  handset.modem().command("hob-save");
  std::string folder = handset.phone().folder();
  std::string partition = content_of(folder + qorextctl::kHobPartition);
  auto block = qorextctl::hob_content(1);
  EXPECT_EQ(partition.substr(0, block.size()), std::string(block.begin(), block.end()));
  EXPECT_EQ(handset.modem().value("hob", "/states/1"), "saved");
}

// A root that is kept between runs.
class KeptRoot : public testing::Test {
 protected:
  CommandResult run(const std::string& words, const std::string& input = "") {
    return run_tool("--phone-root " + phone.folder() + " " + words, input);
  }
  // Plays the lines as soon as the daemon serves requests.
  CommandResult play(const std::string& lines) {
    return run("session", "wait-log 'waiting for data'\n" + lines + "\n");
  }

  PhoneRoot phone{PhoneRoot::bare};
};

TEST_F(KeptRoot, IsPreparedRepeatedlyAndKeepsASavedBlock) {
  EXPECT_EQ(run("phone").status, 0);
  EXPECT_EQ(play("modem hob-save").status, 0);
  EXPECT_THAT(run("phone show").output, HasSubstr("hand-off-block:  saved"));
  EXPECT_EQ(run("phone prepare").status, 0);
  EXPECT_THAT(run("phone show").output, HasSubstr("hand-off-block:  saved"));
  EXPECT_EQ(run("phone prepare --hob-seed 2").status, 0);
  EXPECT_THAT(run("phone show").output, HasSubstr("hand-off-block:  not saved"));
}

// Only after a crash, the daemon requests that the modem verify the SIM PIN itself.
TEST_F(KeptRoot, DeterminesTheNoticeAtTheDaemonsStart) {
  constexpr const char* kNotice = "\"message\": \"utils\"";
  const std::pair<const char*, bool> kBoots[] = {
      {"phone", false},
      {"phone --powerup-reason 0x00020000", true},
      {"phone --modem-restarts 2", true},
      {"phone --modem-restarts none --ssr-reason fatal", true},
  };
  for (const auto& [words, notifies] : kBoots) {
    SCOPED_TRACE(words);
    EXPECT_EQ(run(words).status, 0);
    bool notified = play("modem requests").output.find(kNotice) != std::string::npos;
    EXPECT_EQ(notified, notifies);
  }
}

TEST_F(KeptRoot, ShowsLogsAsJson) {
  EXPECT_EQ(play("modem kpi data=0102030405\nwait-log succeed").status, 0);
  std::string shown = run("--json phone show").output;
  EXPECT_THAT(shown, HasSubstr(R"("resolves":"yes")"));
  EXPECT_THAT(shown, HasSubstr(R"("use":"current","size":5,"mode":"0660")"));
  EXPECT_THAT(shown, HasSubstr(R"("dropbox":[],"hand_off_block":"no block in the RAM")"));
}

TEST_F(KeptRoot, ASaveThatFailsEndsWithStatusOne) {
  CommandResult result = play("modem hob-save");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr(R"("failed")"));
}

TEST(PhoneCommand, RequiresAPhoneRoot) { EXPECT_EQ(run_tool("phone show").status, 2); }

}  // namespace
}  // namespace e2e
