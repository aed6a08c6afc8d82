// SPDX-License-Identifier: Apache-2.0
// System properties and DropBox entries, which are files under the phone's root.
#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <thread>

#include "NativeDropBoxWriter.h"
#include "cutils/properties.h"
#include "tests/unit/platform/temp_folder.h"

namespace {

using test_support::content_of;
using test_support::ScopedEnv;
using test_support::TempFolder;

class PhoneFiles : public testing::Test {
 protected:
  explicit PhoneFiles(const std::string& folder) : folder_(root_ / folder) {}

  std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      names.insert(entry.path().filename());
    }
    return names;
  }
  std::string content(const std::string& name) const { return content_of(folder_ + "/" + name); }

  TempFolder root_;
  ScopedEnv env_{"QOREXT_PHONE_ROOT", root_.path()};
  const std::string folder_;
};

class Properties : public PhoneFiles {
 protected:
  Properties() : PhoneFiles("dev/__properties__") {}

  static std::string get(const char* key, const char* default_value = nullptr) {
    char value[PROPERTY_VALUE_MAX];
    memset(value, 'x', sizeof(value));
    int length = property_get(key, value, default_value);
    EXPECT_EQ(static_cast<size_t>(length), strlen(value));
    return value;
  }
};

TEST_F(Properties, AreReadBackAsTheyWereSet) {
  EXPECT_EQ(property_set("ril.lte.bc.config", "123"), 0);
  EXPECT_EQ(get("ril.lte.bc.config", "other"), "123");
}

TEST_F(Properties, HaveTheLastValueSet) {
  property_set("ril.baseband.rfcable.status", "a longer value");
  property_set("ril.baseband.rfcable.status", "1");
  EXPECT_EQ(get("ril.baseband.rfcable.status"), "1");
}

TEST_F(Properties, HaveTheDefaultWhenTheyAreNotSet) {
  EXPECT_EQ(get("ro.baseband", "default"), "default");
  EXPECT_EQ(get("ro.baseband", nullptr), "");
}

TEST_F(Properties, HaveTheDefaultWhileTheyAreEmpty) {
  EXPECT_EQ(property_set("ril.lte.bc.config", ""), 0);
  EXPECT_EQ(get("ril.lte.bc.config", "default"), "default");
  EXPECT_EQ(get("ril.lte.bc.config", nullptr), "");
}

TEST_F(Properties, AreSetOnceIfTheyAreReadOnly) {
  EXPECT_EQ(property_set("ro.baseband", "mdm"), 0);
  EXPECT_LT(property_set("ro.baseband", "msm"), 0);
  EXPECT_EQ(get("ro.baseband"), "mdm");
}

TEST_F(Properties, HaveOneFileEach) {
  property_set("ril.baseband.config.version", "V1.0");
  EXPECT_EQ(content("ril.baseband.config.version"), "V1.0");
}

TEST_F(Properties, LeaveNoTemporaryFiles) {
  property_set("a", "1");
  property_set("a", "2");
  property_set("b", "3");
  EXPECT_THAT(names(), testing::ElementsAre("a", "b"));
}

TEST_F(Properties, AreReadableByOtherUsers) {
  property_set("a", "1");
  auto mode = std::filesystem::status(folder_ + "/a").permissions();
  EXPECT_NE(mode & std::filesystem::perms::others_read, std::filesystem::perms::none);
}

TEST_F(Properties, HoldNinetyOneCharactersAndNoMore) {
  std::string longest(91, 'v');
  EXPECT_EQ(property_set("a", longest.c_str()), 0);
  EXPECT_EQ(get("a"), longest);
  EXPECT_LT(property_set("a", (longest + "v").c_str()), 0);
  EXPECT_EQ(get("a"), longest);
}

TEST_F(Properties, AreTruncatedToTheCallersBuffer) {
  property_set("a", "1");
  std::ofstream(folder_ + "/a") << std::string(500, 'w');
  EXPECT_EQ(get("a"), std::string(91, 'w'));
}

TEST_F(Properties, TruncateALongDefaultToTheCallersBuffer) {
  EXPECT_EQ(get("a", std::string(500, 'd').c_str()), std::string(91, 'd'));
}

TEST_F(Properties, AllowOnlyPlainNames) {
  EXPECT_EQ(property_set("Az09._@:-", "1"), 0);
  for (const char* key : {"", ".hidden", "..", "a/b", "../a", "a b", "a\n", "\xC3\xA4"}) {
    EXPECT_LT(property_set(key, "1"), 0) << key;
    EXPECT_EQ(get(key, "default"), "default") << key;
  }
  EXPECT_LT(property_set(nullptr, "1"), 0);
  EXPECT_LT(property_set("a", nullptr), 0);
}

TEST_F(Properties, CannotBeSetWithoutTheirFolder) {
  std::ofstream(root_ / "dev") << "a file in the way";
  EXPECT_LT(property_set("a", "1"), 0);
  EXPECT_EQ(get("a", "default"), "default");
}

class DropBox : public PhoneFiles {
 protected:
  DropBox() : PhoneFiles("data/system/dropbox") {}

  static long long now() {
    auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  }
};

TEST_F(DropBox, KeepsATextUnderItsTagAndTime) {
  long long before = now();
  ASSERT_TRUE(NativeDropBoxWriter::addText("modem_vorn", "/data/vorn/log"));
  long long after = now();

  ASSERT_EQ(names().size(), 1u);
  std::string name = *names().begin();
  EXPECT_THAT(name, testing::MatchesRegex("modem_vorn@[0-9]+\\.txt"));
  EXPECT_EQ(content(name), "/data/vorn/log");
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
  for (const auto& name : names()) contents.insert(content(name));
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
  EXPECT_EQ(names().size(), 100u);
}

TEST_F(DropBox, KeepsAnEmptyText) {
  ASSERT_TRUE(NativeDropBoxWriter::addText("tag", ""));
  EXPECT_EQ(names().size(), 1u);
}

TEST_F(DropBox, RefusesATagThatLeavesTheFolder) {
  EXPECT_FALSE(NativeDropBoxWriter::addText("../tag", "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText("", "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText(nullptr, "text"));
  EXPECT_FALSE(NativeDropBoxWriter::addText("tag", nullptr));
  EXPECT_FALSE(std::filesystem::exists(folder_));
}

TEST_F(DropBox, ReportsAnEntryThatCannotBeStored) {
  std::ofstream(root_ / "data") << "a file in the way";
  EXPECT_FALSE(NativeDropBoxWriter::addText("tag", "text"));
}

}  // namespace
