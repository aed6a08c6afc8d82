// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/unit/platform/temp_folder.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/phone/phone_files.h"
#include "tools/qorextctl/phone/phone_report.h"

namespace qorextctl {
namespace {

namespace fs = std::filesystem;

class Phone : public testing::Test {
 protected:
  void prepare(const PhoneFiles& files = {}) {
    auto error = prepare_phone(root_, files);
    EXPECT_FALSE(error) << error->message;
  }
  std::string content(const std::string& name) const {
    return test_support::content_of(root_ + name);
  }
  void write(const std::string& name, const std::string& content) const {
    fs::create_directories(fs::path(root_ + name).parent_path());
    std::ofstream(root_ + name, std::ios::binary) << content;
  }

  test_support::TempFolder folder_;
  std::string root_ = folder_.path();
};

TEST_F(Phone, HasTheFilesOfANormalPowerUpOrTheGivenOnes) {
  prepare();
  EXPECT_EQ(content("/proc/bootinfo"), "POWERUPREASON : 0x00004000\n");
  EXPECT_EQ(content("/sys/module/subsystem_restart/parameters/modem_restarts"), "0\n");
  EXPECT_EQ(content("/sys/module/pil_q6v5_mss/parameters/ssr_reason"), "");
  prepare({.power_up_reason = "0x00020000", .modem_restarts = "12", .ssr_reason = "fatal"});
  EXPECT_EQ(content("/proc/bootinfo"), "POWERUPREASON : 0x00020000\n");
  EXPECT_EQ(content("/sys/module/subsystem_restart/parameters/modem_restarts"), "12\n");
  EXPECT_EQ(content("/sys/module/pil_q6v5_mss/parameters/ssr_reason"), "fatal\n");
}

TEST_F(Phone, HasTheBlockAtTheOffsetThatTheDaemonMaps) {
  prepare({.hob_seed = 3});
  EXPECT_EQ(fs::file_size(root_ + kHobRam), kHobOffset + kHobSize);
  std::ifstream ram(root_ + kHobRam, std::ios::binary);
  ram.seekg(static_cast<std::streamoff>(kHobOffset));
  Bytes block{std::istreambuf_iterator<char>(ram), {}};
  EXPECT_EQ(block, hob_content(3));
  EXPECT_NE(block, hob_content(4));
  EXPECT_EQ(fs::file_size(root_ + kHobPartition), 65536U);
}

TEST_F(Phone, ReadsTheBlockFromAFileOfTheSameSize) {
  std::string block(kHobSize, 'h');
  write("/block", block);
  prepare({.hob_file = root_ + "/block"});
  write(kHobPartition, block);
  EXPECT_EQ(to_json(phone_report(root_))["hand_off_block"], "saved");
  write("/block", "short");
  auto error = prepare_phone(root_, {.hob_file = root_ + "/block"});
  ASSERT_TRUE(error);
  EXPECT_EQ(error->outcome, Outcome::usage);
}

TEST_F(Phone, KeepsSavedFilesWhenPreparedAgain) {
  prepare();
  Bytes block = hob_content(1);
  write(kHobPartition, {block.begin(), block.end()});
  write("/data/vorn/vorn_1.log", "kept");
  prepare();
  EXPECT_EQ(to_json(phone_report(root_))["hand_off_block"], "saved");
  EXPECT_EQ(content("/data/vorn/vorn_1.log"), "kept");
}

TEST_F(Phone, ReportContainsLogsPropertiesAndEntries) {
  write("/data/vorn/vorn_1.log", "old");
  write("/data/vorn/vorn_2.log", "newer");
  write("/data/vorn/~vorn0007.log", "x");
  fs::create_symlink("/data/vorn/vorn_2.log", root_ + "/data/vorn/.0001");
  fs::create_symlink("/data/vorn/gone.log", root_ + "/data/vorn/.0002");
  write("/dev/__properties__/ril.test", "1");
  write("/data/system/dropbox/modem_vorn@1700000000123.txt", "/data/vorn/vorn_1.log");
  Json shown = to_json(phone_report(root_));
  EXPECT_EQ(shown["links"][0]["resolves"], "yes");
  EXPECT_EQ(shown["links"][1]["target"], "/data/vorn/gone.log");
  EXPECT_EQ(shown["links"][1]["resolves"], "no");
  EXPECT_EQ(shown["logs"][0]["use"], "unlinked");
  EXPECT_EQ(shown["logs"][1]["use"], "current");
  EXPECT_EQ(shown["logs"][1]["size"], 5);
  EXPECT_EQ(shown["logs"][2]["use"], "temporary");
  EXPECT_EQ(shown["properties"][0]["name"], "ril.test");
  EXPECT_EQ(shown["dropbox"][0]["tag"], "modem_vorn");
  EXPECT_EQ(shown["dropbox"][0]["text"], "/data/vorn/vorn_1.log");
  EXPECT_EQ(shown["hand_off_block"], "no block in the RAM");
}

TEST_F(Phone, ReportOfAnEmptyRootIsEmpty) {
  EXPECT_EQ(to_text(phone_report(root_)),
            "  links:           none\n"
            "  logs:            none\n"
            "  properties:      none\n"
            "  dropbox:         none\n"
            "  hand-off-block:  no block in the RAM\n");
}

}  // namespace
}  // namespace qorextctl
