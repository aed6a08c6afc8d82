// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "cutils/properties.h"
#include "tests/unit/platform/temp_folder.h"

namespace {

using test_support::content_of;
using test_support::ScopedEnv;
using test_support::TempFolder;

class Properties : public testing::Test {
 protected:
  std::string get(const char* key, const char* default_value = nullptr) {
    char value[PROPERTY_VALUE_MAX];
    memset(value, 'x', sizeof(value));
    int length = property_get(key, value, default_value);
    EXPECT_EQ(static_cast<size_t>(length), strlen(value));
    return value;
  }

  std::string folder() const { return root_ / "dev/__properties__"; }

  TempFolder root_;
  ScopedEnv env_{"QOREXT_PHONE_ROOT", root_.path()};
};

TEST_F(Properties, AreReadBackAsTheyWereSet) {
  EXPECT_EQ(property_set("ril.lte.bc.config", "123"), 0);
  EXPECT_EQ(get("ril.lte.bc.config", "other"), "123");
}

TEST_F(Properties, TakeTheLastValueSet) {
  property_set("ro.baseband", "a longer value");
  property_set("ro.baseband", "mdm");
  EXPECT_EQ(get("ro.baseband"), "mdm");
}

TEST_F(Properties, HaveTheDefaultWhenTheyAreNotSet) {
  EXPECT_EQ(get("ro.baseband", "default"), "default");
  EXPECT_EQ(get("ro.baseband", nullptr), "");
}

TEST_F(Properties, MayBeEmpty) {
  EXPECT_EQ(property_set("ro.baseband", ""), 0);
  EXPECT_EQ(get("ro.baseband", "default"), "");
}

TEST_F(Properties, LieInOneFileEach) {
  property_set("ril.baseband.config.version", "V1.0");
  EXPECT_EQ(content_of(folder() + "/ril.baseband.config.version"), "V1.0");
}

TEST_F(Properties, LeaveNothingButTheirFilesBehind) {
  property_set("a", "1");
  property_set("a", "2");
  property_set("b", "3");
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("a", "b"));
}

TEST_F(Properties, AreReadableForOthers) {
  property_set("a", "1");
  auto mode = std::filesystem::status(folder() + "/a").permissions();
  EXPECT_NE(mode & std::filesystem::perms::others_read, std::filesystem::perms::none);
}

TEST_F(Properties, HoldNinetyOneCharactersAndNoMore) {
  std::string longest(91, 'v');
  EXPECT_EQ(property_set("a", longest.c_str()), 0);
  EXPECT_EQ(get("a"), longest);
  EXPECT_LT(property_set("a", (longest + "v").c_str()), 0);
  EXPECT_EQ(get("a"), longest);
}

TEST_F(Properties, AreCutToTheCallersRoomWhenTheirFileHoldsMore) {
  property_set("a", "1");
  std::ofstream(folder() + "/a") << std::string(500, 'w');
  EXPECT_EQ(get("a"), std::string(91, 'w'));
}

TEST_F(Properties, CutALongDefaultToTheCallersRoom) {
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

TEST_F(Properties, CannotBeSetWhereTheirFolderCannotBe) {
  std::ofstream(root_ / "dev") << "a file in the way";
  EXPECT_LT(property_set("a", "1"), 0);
  EXPECT_EQ(get("a", "default"), "default");
}

}  // namespace
