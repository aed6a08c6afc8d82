// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_logs.h"

#include "tests/unit/product/vorn_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace vorn_directory_test {

class VornDirectory : public VornPhone {
 protected:
  VornDirectory() { make_folder(kVorn); }

  // Creates a log at `when` and returns its path.
  std::string create(time_t when) {
    now = when;
    VornPath name = {};
    trace.clear();
    EXPECT_EQ(vorn_create_new_log(name, is_synced), 0);
    return name;
  }
};

TEST_F(VornDirectory, LinkToALogResolves) {
  put_log(kPrevious, "/data/vorn/a.log", "");
  VornPath path = "something else that is longer than the answer";
  EXPECT_EQ(vorn_get_filename(2, path), 0);
  EXPECT_STREQ(path, "/data/vorn/a.log");
  EXPECT_THAT(trace, ElementsAre(kLookUp + kPrevious));
}

TEST_F(VornDirectory, TargetOfADanglingLinkIsStoredButFails) {
  put_link(kCurrent, "/data/vorn/a.log");
  VornPath path = {};
  EXPECT_EQ(vorn_get_filename(1, path), -1);
  EXPECT_STREQ(path, "/data/vorn/a.log");
  EXPECT_THAT(trace, ElementsAre(kLookUp + kCurrent));
}

TEST_F(VornDirectory, MissingLinkFailsWithAnEmptyName) {
  VornPath path = "something";
  EXPECT_EQ(vorn_get_filename(1, path), -1);
  EXPECT_TRUE(std::all_of(std::begin(path), std::end(path), [](char c) { return c == '\0'; }));
  EXPECT_THAT(trace, ElementsAreArray(not_linked(kCurrent)));
}

TEST_F(VornDirectory, IndexThatIsNotALinkFails) {
  put(kCurrent, "a file");
  VornPath path = {};
  EXPECT_EQ(vorn_get_filename(1, path), -1);
  EXPECT_THAT(trace, ElementsAre(kLookUp + kCurrent, "log: vorn_get_filename: get real name of " +
                                                         kCurrent + " failed, rc 22"));
}

TEST_F(VornDirectory, TargetIsCutAt149Characters) {
  std::string longest = "/data/vorn/" + std::string(138, 'x');
  put(longest);
  put_link(kCurrent, longest + "y");
  VornPath path = {};
  EXPECT_EQ(vorn_get_filename(1, path), 0);
  EXPECT_EQ(path, longest);
}

TEST_F(VornDirectory, LogIsNamedByTheLocalTimeOfItsCreation) {
  EXPECT_EQ(create(1794812132), "/data/vorn/vorn_20261116065532.log");
  setenv("TZ", "TST-3:30", 1);
  EXPECT_EQ(create(1794812132), "/data/vorn/vorn_20261116102532.log");
  EXPECT_EQ(create(0), "/data/vorn/vorn_19700101033000.log");
}

TEST_F(VornDirectory, LogWithoutALocalTimeIsOf1900) {
  EXPECT_EQ(create(time_t{1} << 60), "/data/vorn/vorn_19000101000000.log");
}

TEST_F(VornDirectory, NewLogIsEmptyAndHasMode740) {
  std::string log = log_name(now);
  put(log, "already there");
  std::filesystem::remove(at(log));
  EXPECT_EQ(create(now), log);
  EXPECT_EQ(content(log), "");
  EXPECT_EQ(mode(log), 0740u);
  EXPECT_EQ(target(kCurrent), log);
}

TEST_F(VornDirectory, NewLogTruncatesAFileOfItsName) {
  put(log_name(now), "already there");
  EXPECT_EQ(content(create(now)), "");
}

TEST_F(VornDirectory, LogsOfOneSecondHaveDifferentNames) {
  std::string first = create(now);
  put(first, "first");
  std::string second = create(now);
  EXPECT_EQ(second, log_name(now + 1));
  EXPECT_EQ(target(kPrevious), first);
  EXPECT_EQ(content(first), "first");
  put(second, "second");
  std::string third = create(now);
  EXPECT_EQ(third, log_name(now + 2));
  EXPECT_EQ(target(kCurrent), third);
  EXPECT_EQ(target(kPrevious), second);
  EXPECT_EQ(content(second), "second");
  EXPECT_EQ(create(now), first);  // its log has been deleted
}

TEST_F(VornDirectory, LogsWithoutALocalTimeShareTheirName) {
  std::string only = create(time_t{1} << 60);
  EXPECT_EQ(create(time_t{1} << 60), only);
}

TEST_F(VornDirectory, FirstLogIsTheCurrentOne) {
  std::string first = create(now);
  EXPECT_THAT(trace, ElementsAreArray(created(first) + not_linked(kCurrent) +
                                      Lines{kLookUp + kCurrent} + links_synced()));
  EXPECT_THAT(names(), UnorderedElementsAre(".0001", first.substr(kVorn.size() + 1)));
}

TEST_F(VornDirectory, FirstLogBecomesThePreviousOneAfterTheSecond) {
  std::string first = create(now);
  std::string second = create(now + 1);
  EXPECT_THAT(
      trace, ElementsAreArray(created(second) + Lines{kLookUp + kCurrent, kLookUp + kCurrent} +
                              not_linked(kPrevious) + Lines{kLookUp + kPrevious} + links_synced()));
  EXPECT_EQ(target(kCurrent), second);
  EXPECT_EQ(target(kPrevious), first);
}

TEST_F(VornDirectory, ThirdLogDeletesTheFirst) {
  std::string first = create(now);
  std::string second = create(now + 1);
  std::string third = create(now + 1);
  EXPECT_THAT(logs(), Contains("vorn_create_new_log: remove old " + first));
  EXPECT_FALSE(has(first));
  EXPECT_EQ(target(kCurrent), third);
  EXPECT_EQ(target(kPrevious), second);
}

TEST_F(VornDirectory, LinkOfAnInterruptedRunIsReplaced) {
  put_link(kVorn + "/.new", "/data/vorn/interrupted.log");
  std::string log = create(now);
  EXPECT_EQ(target(kCurrent), log);
  EXPECT_THAT(names(), UnorderedElementsAre(".0001", log.substr(kVorn.size() + 1)));
}

TEST_F(VornDirectory, LogDeletedBeforeItIsLinkedGetsNoLink) {
  put_log(kCurrent, "/data/vorn/a.log", "a");
  on_log = [this](const std::string& text) {
    if (text.starts_with("vorn_create_new_log: create new")) {
      std::filesystem::remove(at(log_name(now)));
    }
  };
  create(now);
  EXPECT_FALSE(has(kCurrent));
  EXPECT_EQ(target(kPrevious), "/data/vorn/a.log");
}

TEST_F(VornDirectory, MissingCurrentLogDoesNotBecomeThePreviousOne) {
  put_link(kCurrent, "/data/vorn/lost.log");
  put_log(kPrevious, "/data/vorn/kept.log", "kept");
  std::string log = create(now);
  EXPECT_THAT(trace, ElementsAreArray(created(log) + Lines{kLookUp + kCurrent, kLookUp + kCurrent} +
                                      links_synced()));
  EXPECT_EQ(target(kCurrent), log);
  EXPECT_EQ(target(kPrevious), "/data/vorn/kept.log");
}

TEST_F(VornDirectory, MissingPreviousLogIsReplacedWithoutACleanUp) {
  put_log(kCurrent, "/data/vorn/a.log", "a");
  put_link(kPrevious, "/data/vorn/lost.log");
  put(kVorn + "/stray");
  set_age(kVorn + "/stray", kTwoDays);
  create(now);
  EXPECT_EQ(target(kPrevious), "/data/vorn/a.log");
  EXPECT_TRUE(has(kVorn + "/stray"));
}

TEST_F(VornDirectory, LogThatCannotBeCreatedChangesNothing) {
  make_folder(log_name(now));
  put_log(kCurrent, "/data/vorn/a.log", "a");
  VornPath name = "untouched";
  EXPECT_EQ(vorn_create_new_log(name, is_synced), -1);
  EXPECT_THAT(trace, ElementsAre("log: vorn_create_new_log: create new log " + log_name(now) +
                                 " failed, errno 21"));
  EXPECT_STREQ(name, "untouched");
  EXPECT_EQ(target(kCurrent), "/data/vorn/a.log");
}

TEST_F(VornDirectory, CleanUpDeletesByAgeInBothDirections) {
  struct {
    std::string name;
    time_t age;
    bool stays;
  } rows[] = {
      {"vorn_20200101000000.log", kTwoDays, false},
      {"vorn_20200102000000.log", kTwoDays - 1, true},
      {"vorn_20200103000000.log", 100 * kTwoDays, false},
      {"vorn_20990101000000.log", -kTwoDays, false},
      {"vorn_20990102000000.log", 1 - kTwoDays, true},
      {"~vorn0001.log", kTwoDays, false},
      {"~vorn0002.log", kTwoDays - 1, true},
      {"anything", kTwoDays, false},
      {".hidden", kTwoDays, true},
      {".0003", kTwoDays, true},
      {"current.log", kTwoDays, true},
      {"previous.log", -kTwoDays, true},
  };
  put_link(kCurrent, "/data/vorn/current.log");
  put_link(kPrevious, "/data/vorn/previous.log");
  for (auto& row : rows) {
    put(kVorn + "/" + row.name);
    set_age(kVorn + "/" + row.name, row.age);
  }
  vorn_clean_dir();
  for (auto& row : rows) {
    EXPECT_EQ(has(kVorn + "/" + row.name), row.stays) << row.name;
    std::string line = "vorn_clean_dir: unexpected /data/vorn/" + row.name;
    EXPECT_EQ(testing::Value(logs(), Not(Contains(line))), row.stays) << row.name;
  }
  EXPECT_TRUE(has(kCurrent) && has(kPrevious));
}

TEST_F(VornDirectory, CleanUpWithoutLinksDeletesAllOldLogs) {
  put(kVorn + "/vorn_20200101000000.log");
  set_age(kVorn + "/vorn_20200101000000.log", kTwoDays);
  vorn_clean_dir();
  EXPECT_THAT(trace, ElementsAreArray(not_linked(kCurrent) + not_linked(kPrevious) +
                                      Lines{"log: vorn_clean_dir: unexpected "
                                            "/data/vorn/vorn_20200101000000.log"}));
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(VornDirectory, CleanUpKeepsEntriesWithoutAStatus) {
  put_link(kVorn + "/dangling", "/data/vorn/nothing");
  set_age(kVorn + "/dangling", kTwoDays);
  vorn_clean_dir();
  EXPECT_TRUE(has(kVorn + "/dangling"));
}

TEST_F(VornDirectory, CleanUpOfAMissingDirectoryIsLogged) {
  std::filesystem::remove(at(kVorn));
  vorn_clean_dir();
  EXPECT_THAT(trace, ElementsAre("log: vorn_clean_dir: can't open /data/vorn, errno 2"));
}

TEST_F(VornDirectory, ResetKeepsTemporaryFilesOnly) {
  put_log(kCurrent, "/data/vorn/vorn_20260101000000.log", "current");
  put_link(kPrevious, "/data/vorn/lost.log");
  for (std::string name : {".hidden", "stray", "~vorn0001.log", "~anything"}) {
    put(kVorn + "/" + name);
  }
  vorn_reset_dir();
  EXPECT_THAT(trace, ElementsAre("log: vorn_reset_dir DONE!"));
  EXPECT_THAT(names(), UnorderedElementsAre("~vorn0001.log", "~anything"));
}

TEST_F(VornDirectory, ResetOfAMissingDirectoryIsLogged) {
  std::filesystem::remove(at(kVorn));
  vorn_reset_dir();
  EXPECT_THAT(trace, ElementsAre("log: vorn_reset_dir: can't open /data/vorn, errno 2"));
}

TEST_F(VornDirectory, NamesWithinAPathOf149CharactersAreDeleted) {
  std::string fits(138, 'x');
  put(kVorn + "/" + fits);
  put(kVorn + "/" + fits + "y");
  set_age(kVorn + "/" + fits, kTwoDays);
  vorn_clean_dir();
  EXPECT_THAT(names(), UnorderedElementsAre(fits + "y"));
}

TEST_F(VornDirectory, NamesOfTheMaximumLengthAreKept) {
  put(kVorn + "/" + std::string(255, 'x'));
  vorn_clean_dir();
  vorn_reset_dir();
  EXPECT_THAT(names(), UnorderedElementsAre(std::string(255, 'x')));
}

}  // namespace vorn_directory_test
