// SPDX-License-Identifier: Apache-2.0
// KPI logs on a full or failing disk, and after a power failure.
#include "src/capture/kpi_logs.h"
#include "tests/unit/product/vorn_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Not;
using testing::StartsWith;

namespace kpi_disk_test {

const std::string kNewLink = "/data/vorn/.new";

class KpiDisk : public VornPhone {
 protected:
  KpiDisk() : log(log_name(now - 10)), new_log(log_name(now)) { put_log(kCurrent, log, "one"); }

  void fill_log() const { std::filesystem::resize_file(at(log), kLogLimit); }
  static std::string not_written(const std::string& path, int error) {
    return "log: vorn_update_current_log: Unable to write " + path + ", errno " +
           std::to_string(error);
  }
  void expect_not_merged() const {
    EXPECT_EQ(content(log), "one");
    EXPECT_THAT(logs(), Not(Contains(testing::HasSubstr("succeed"))));
  }

  std::string log;
  std::string new_log;
};

TEST_F(KpiDisk, ShortWriteIntoTheLogIsContinued) {
  put(kTemporary, std::string(1000, 'x'));
  file_write_limit = 100;
  merge_temporary();
  EXPECT_EQ(content(log), "one" + std::string(1000, 'x'));
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiDisk, FullDiskIsAFailedMergeAndTheLogIsUnchanged) {
  put(kTemporary, std::string(1000, 'x'));
  FileSizeLimit limit(600);
  EXPECT_THAT(merge_temporary(), ElementsAre(kLookUp + kCurrent, not_written(log, EFBIG)));
  expect_not_merged();
  EXPECT_EQ(content(kTemporary), std::string(1000, 'x'));
}

TEST_F(KpiDisk, WriteOfNoBytesIsAFailedMerge) {
  put(kTemporary, "x");
  file_write_limit = 0;
  merge_temporary();
  EXPECT_THAT(logs(), Contains(StartsWith("vorn_update_current_log: Unable to write " + log)));
  expect_not_merged();
}

TEST_F(KpiDisk, LogThatCannotBeSyncedIsAFailedMerge) {
  failing["fsync " + log] = EIO;
  EXPECT_THAT(merge("two"),
              ElementsAreArray(begun() + Lines{"call fsync " + log, not_written(log, EIO)}));
  expect_not_merged();
  EXPECT_EQ(content(kTemporary), "two");
}

TEST_F(KpiDisk, TemporaryFileThatCannotBeReadIsAFailedMerge) {
  make_folder(kTemporary);  // opening succeeds and reading fails
  EXPECT_THAT(merge_temporary(),
              ElementsAre(kLookUp + kCurrent, "log: vorn_update_current_log: Unable to read " +
                                                  kTemporary + ", errno 21"));
  expect_not_merged();
  EXPECT_TRUE(has(kTemporary));
}

TEST_F(KpiDisk, LogThatCannotBeCutBackIsLogged) {
  failing = {{"fsync " + log, EIO}, {"ftruncate", EROFS}};
  merge("two");
  EXPECT_EQ(trace.back(), "log: vorn_update_current_log: Unable to truncate " + log + ", errno 30");
  EXPECT_EQ(content(log), "onetwo");
}

TEST_F(KpiDisk, MergeAfterAFailedOneIsComplete) {
  failing["fsync " + log] = ENOSPC;
  merge("two");
  failing.clear();
  merge("three");
  EXPECT_EQ(content(log), "onethree");
}

TEST_F(KpiDisk, OwnerAndModeAreSetAgainAfterAFailedFirstMerge) {
  put(log);
  failing["fsync " + log] = EIO;
  merge("two");
  failing.clear();
  EXPECT_THAT(merge("two"), ElementsAreArray(begun() + owner_and_mode_set(log) + appended(log)));
}

TEST_F(KpiDisk, PackageThatLacksAPacketIsNotMerged) {
  store(1, "a");
  {
    FileSizeLimit limit(3);
    store(2, "bcde");
  }
  trace.clear();
  store(3, "f", true);
  ASSERT_EQ(trace.size(), 2u);
  EXPECT_EQ(trace[0], taken()[0]);
  EXPECT_THAT(trace[1], StartsWith("log: vorn_update_current_log: Unable to write " + kTemporary));
  expect_not_merged();
  EXPECT_TRUE(has(kTemporary));
  EXPECT_EQ(receiver.package_id, -1);
}

TEST_F(KpiDisk, PackageWhoseFileCouldNotBeOpenedOnceIsNotMerged) {
  put(kTemporary, "of an earlier package");
  failing["open " + kTemporary] = EMFILE;
  store(1, "a");
  failing.clear();
  trace.clear();
  store(2, "b", true);
  EXPECT_THAT(trace, ElementsAreArray(taken() + Lines{not_written(kTemporary, EMFILE)}));
  expect_not_merged();
}

TEST_F(KpiDisk, PackageThatBeginsAgainIsMerged) {
  failing["open " + kTemporary] = EMFILE;
  store(1, "a");
  failing.clear();
  EXPECT_THAT(merge("two"), ElementsAreArray(begun() + appended(log)));
  EXPECT_EQ(content(log), "onetwo");
}

// A rejected packet resets the receiver: later packets of the same id belong to another package.
TEST_F(KpiDisk, LostPacketDoesNotAffectTheNextPackage) {
  failing["open " + kTemporary] = EMFILE;
  store(1, "a");
  failing.clear();
  receiver.reset();
  store(2, "x", true);
  EXPECT_EQ(content(log), "onex");
}

TEST_F(KpiDisk, LinksAreSyncedBeforeSuccessIsLogged) {
  fill_log();
  merge("x");
  auto synced = std::find(trace.begin(), trace.end(), "call fsync " + kVorn);
  auto succeeded = std::find(trace.begin(), trace.end(),
                             "log: vorn_update_current_log: update " + new_log + " succeed.");
  ASSERT_NE(succeeded, trace.end());
  EXPECT_LT(synced, succeeded);
}

TEST_F(KpiDisk, LinksAreSyncedBeforeTheOldestLogIsDeleted) {
  std::string oldest = log_name(now - 20);
  put_log(kPrevious, oldest, "oldest");
  fill_log();
  on_log = [&](const std::string& text) {
    if (!text.starts_with("vorn_create_new_log: remove old")) return;
    EXPECT_THAT(trace, Contains("call fsync " + kVorn));
  };
  merge("x");
  EXPECT_FALSE(has(oldest));
}

TEST_F(KpiDisk, MergeThatChangesNoLinkSyncsNoDirectory) {
  merge("x");
  EXPECT_THAT(trace, Not(Contains("call fsync " + kVorn)));
}

// The process before this one may have been killed between a change of the links and their sync.
TEST_F(KpiDisk, FirstMergeOfAProcessSyncsExistingLinks) {
  kpi_store.logs.are_links_synced = false;
  Lines synced = appended(log);
  synced.insert(synced.end() - 1, "call fsync " + kVorn);
  EXPECT_THAT(merge("x"), ElementsAreArray(begun() + synced));
  EXPECT_THAT(merge("y"), ElementsAreArray(begun() + appended(log)));
}

TEST_F(KpiDisk, LinksThatCouldNotBeSyncedAreSyncedByTheNextMerge) {
  fill_log();
  failing["fsync " + kVorn] = EIO;
  merge("x");
  failing.clear();
  EXPECT_THAT(merge("y"), Contains("call fsync " + kVorn));
  EXPECT_THAT(merge("z"), Not(Contains("call fsync " + kVorn)));
}

TEST_F(KpiDisk, FailedSyncOfTheDirectoryIsLoggedAndTheMergeContinues) {
  fill_log();
  failing["fsync " + kVorn] = EIO;
  merge("x");
  EXPECT_THAT(logs(), Contains("vorn_update_current_log: Unable to sync /data/vorn, errno 5"));
  EXPECT_EQ(content(new_log), "x");
}

TEST_F(KpiDisk, DirectoryThatCannotBeOpenedForItsSyncIsLogged) {
  fill_log();
  failing["open " + kVorn] = EMFILE;
  merge("x");
  EXPECT_THAT(logs(), Contains("vorn_update_current_log: Unable to sync /data/vorn, errno 24"));
}

TEST_F(KpiDisk, LinkThatCannotBeCreatedUnderANewNameIsCreatedInPlace) {
  failing["symlink " + kNewLink] = ENOSPC;
  fill_log();
  merge("x");
  EXPECT_THAT(logs(),
              Contains("vorn_create_new_log: Unable to link " + kNewLink + ", errno 28").Times(2));
  EXPECT_EQ(target(kCurrent), new_log);
  EXPECT_EQ(target(kPrevious), log);
}

TEST_F(KpiDisk, LinkThatCannotBeRenamedIsCreatedInPlace) {
  failing["rename"] = EIO;
  fill_log();
  merge("x");
  EXPECT_THAT(logs(), Contains("vorn_create_new_log: Unable to rename " + kNewLink + ", errno 5"));
  EXPECT_EQ(target(kCurrent), new_log);
  EXPECT_EQ(target(kPrevious), log);
  EXPECT_FALSE(has(kNewLink));
}

TEST_F(KpiDisk, LinkThatCannotBeCreatedIsLoggedAndMissing) {
  failing = {{"symlink " + kNewLink, EACCES}, {"symlink " + kCurrent, EACCES}};
  fill_log();
  merge("x");
  EXPECT_THAT(logs(), Contains("vorn_create_new_log: Unable to link " + kCurrent + ", errno 13"));
  EXPECT_FALSE(has(kCurrent));
}

// A folder with the name of a new link prevents the rename. The old link must not stay: every
// package would hand the same log off again, or clear the directory.
TEST_F(KpiDisk, FolderWithTheNameOfANewLinkDoesNotHandALogOffTwice) {
  make_folder(kNewLink);
  fill_log();
  for (const char* payload : {"a", "b", "c"}) merge(payload);
  EXPECT_THAT(trace, Not(Contains(StartsWith("call addText"))));
  EXPECT_EQ(content(new_log), "abc");
}

TEST_F(KpiDisk, FolderWithTheNameOfTheFirstLinkDoesNotClearTheDirectory) {
  std::filesystem::remove(at(kCurrent));
  std::filesystem::remove(at(log));
  make_folder(kNewLink);
  for (const char* payload : {"a", "b", "c"}) merge(payload);
  EXPECT_EQ(content(new_log), "abc");
}

// Between any two system calls, every log with acknowledged packages has a link.
TEST_F(KpiDisk, RotatedLogIsThePreviousOneBeforeANewOneIsCurrent) {
  put_log(kPrevious, log_name(now - 20), "oldest");
  fill_log();
  on_rename = [&](const std::string& link) {
    if (link == kCurrent) {
      EXPECT_EQ(target(kPrevious), log);
    }
  };
  merge("x");
  EXPECT_EQ(target(kCurrent), new_log);
}

// The state after a power cut between the two renames.
TEST_F(KpiDisk, LogNamedByBothLinksIsKept) {
  put_link(kPrevious, log);
  fill_log();
  merge("x");
  EXPECT_EQ(target(kCurrent), new_log);
  EXPECT_EQ(target(kPrevious), log);
  EXPECT_TRUE(has(log));
}

}  // namespace kpi_disk_test
