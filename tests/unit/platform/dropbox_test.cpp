// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <thread>

#include "NativeDropBoxWriter.h"
#include "tests/unit/platform/temp_folder.h"

namespace {

using test_support::content_of;
using test_support::ScopedEnv;
using test_support::TempFolder;

long long now() {
  auto time = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

class DropBox : public testing::Test {
 protected:
  std::set<std::string> entries() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  std::string folder() const { return root_ / "data/system/dropbox"; }

  TempFolder root_;
  ScopedEnv env_{"QOREXT_PHONE_ROOT", root_.path()};
};

TEST_F(DropBox, KeepsATextUnderItsTagAndTime) {
  long long before = now();
  ASSERT_TRUE(NativeDropBoxWriter::addText("modem_vorn", "/data/vorn/log"));
  long long after = now();

  ASSERT_EQ(entries().size(), 1u);
  std::string name = *entries().begin();
  EXPECT_THAT(name, testing::MatchesRegex("modem_vorn@[0-9]+\\.txt"));
  EXPECT_EQ(content_of(folder() + "/" + name), "/data/vorn/log");
  long long time = std::stoll(name.substr(strlen("modem_vorn@")));
  EXPECT_GE(time, before);
  EXPECT_LE(time, after);
}

TEST_F(DropBox, KeepsEveryTextOfABurst) {
  constexpr int kTexts = 200;
  for (int i = 0; i < kTexts; ++i) {
    ASSERT_TRUE(NativeDropBoxWriter::addText("tag", std::to_string(i).c_str()));
  }
  std::set<std::string> contents;
  for (const auto& name : entries()) contents.insert(content_of(folder() + "/" + name));
  EXPECT_EQ(contents.size(), size_t{kTexts});
}

TEST_F(DropBox, KeepsTheTextsOfSeveralThreads) {
  auto add = [] {
    for (int i = 0; i < 50; ++i) EXPECT_TRUE(NativeDropBoxWriter::addText("tag", "text"));
  };
  std::thread first(add);
  std::thread second(add);
  first.join();
  second.join();
  EXPECT_EQ(entries().size(), 100u);
}

TEST_F(DropBox, KeepsAnEmptyText) {
  ASSERT_TRUE(NativeDropBoxWriter::addText("tag", ""));
  EXPECT_EQ(entries().size(), 1u);
}

TEST_F(DropBox, RefusesATagThatLeavesTheFolder) {
  EXPECT_FALSE(NativeDropBoxWriter::addText("../tag", "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText("", "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText(nullptr, "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText("tag", nullptr));
  EXPECT_FALSE(std::filesystem::exists(folder()));
}

TEST_F(DropBox, TellsWhenAnEntryCannotBeStored) {
  std::ofstream(root_ / "data") << "a file in the way";
  EXPECT_FALSE(NativeDropBoxWriter::addText("tag", "text"));
}

}  // namespace
