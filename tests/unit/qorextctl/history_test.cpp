// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/platform/temp_folder.h"

namespace qorextctl {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class History : public testing::Test {
 protected:
  fs::perms mode() const { return fs::status(path_).permissions(); }

  test_support::TempFolder folder_;
  std::string path_ = folder_ / "state/history";
  HistoryFile history_{path_};
};

TEST_F(History, ReturnsLinesInTheirOrder) {
  EXPECT_TRUE(history_.load()->empty());
  EXPECT_FALSE(history_.add("get-nam"));
  EXPECT_FALSE(HistoryFile(path_).add("get-ddtm"));
  EXPECT_THAT(*history_.load(), ElementsAre("get-nam", "get-ddtm"));
}

TEST_F(History, MakesAnExistingFilePrivate) {
  fs::create_directories(folder_ / "state");
  std::ofstream(path_) << "old\n";
  fs::permissions(path_, fs::perms::all);
  EXPECT_FALSE(history_.add("get-nam"));
  EXPECT_EQ(mode(), fs::perms(0600));
}

TEST_F(History, RemovesOldLinesFromTheFile) {
  fs::create_directories(folder_ / "state");
  {
    std::ofstream file(path_);
    for (size_t i = 0; i < kMaxHistoryLines + 5; ++i) file << "line " << i << "\n";
  }
  auto lines = history_.load();
  ASSERT_EQ(lines->size(), kMaxHistoryLines);
  EXPECT_EQ(lines->front(), "line 5");
  EXPECT_EQ(HistoryFile(path_).load()->size(), kMaxHistoryLines);
  EXPECT_EQ(mode(), fs::perms(0600));
}

TEST_F(History, ReportsAFileThatCannotBeWritten) {
  auto error = HistoryFile("/proc/nothing/history").add("get-nam");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->message,
            "the history is not saved: /proc/nothing/history: No such file or directory");
}

TEST_F(History, AnEmptyPathStoresNothing) {
  EXPECT_FALSE(HistoryFile("").add("get-nam"));
  EXPECT_TRUE(HistoryFile("").load()->empty());
}

TEST_F(History, TheEnvironmentSetsThePath) {
  setenv("HOME", "/home/a", 1);
  setenv("XDG_STATE_HOME", "/state", 1);
  EXPECT_EQ(history_path(), "/state/qorextctl/history");
  setenv("XDG_STATE_HOME", "relative", 1);
  EXPECT_EQ(history_path(), "/home/a/.local/state/qorextctl/history");
  unsetenv("XDG_STATE_HOME");
  EXPECT_EQ(history_path(), "/home/a/.local/state/qorextctl/history");
  unsetenv("HOME");
  EXPECT_EQ(history_path(), "");
}

TEST(PrivateLine, ALineWithPersonalValuesIsPrivate) {
  for (const char* line : {"check-spc code=123456",
                           "set-nam spc=000000 sid=1",
                           "set-nam spc=0",
                           "set-nam mdn=5551234",
                           "expect-failure check-spc code=123456",
                           "nv-write rde-id=32 data=313233343536",
                           "cdma id=0x02000016 code=123456",
                           "raw 0A000002 00000000 00000000 313233343536",
                           "cdma id=0x02000015 data=20000000000000000000000006000000313233343536",
                           "modem set nam.mdn=9135550199",
                           "modem set settings.spc=123456",
                           "modem set security.subsidy_lock_code=123456",
                           "modem nv 32 313233343536",
                           "modem {\"command\":\"set\"}",
                           "raw 0g",
                           "set-nam 'spc=1",
                           "utils type=9 data=3132",
                           "utils type=9 data=3z",
                           "utlis data=3132",
                           "cdma id=0x02000099 data=3132",
                           "generic id=0x50599 data=3132",
                           "nv-write rde-id=32 data=3z",
                           "tune data=0A spc=1",
                           "raw 07000002 00000000 00000000 000000000000"}) {
    EXPECT_TRUE(is_private_line(line)) << line;
  }
}

TEST(PrivateLine, OtherLinesArePublic) {
  for (const char* line :
       {"get-nam", "nv-read rde-id=32", "nv-write rde-id=7000 data=01", "frob", "",
        "tune data=0A0B", "coverage text=on", "modem nv 32", "modem nv 28 0A",
        "modem set lte.mcc=310", "modem indicate notify", "wait-unsol 2 5", "# spc"}) {
    EXPECT_FALSE(is_private_line(line)) << line;
  }
}

}  // namespace
}  // namespace qorextctl
