// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_store.h"

#include "tests/unit/product/vorn_phone.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace kpi_store_test {

// Packages from their packets to the current log.
class KpiStoreTest : public VornPhone {
 protected:
  KpiStoreTest() : log(log_name(now)) {}

  // Creates a current log with this text.
  void begin(const std::string& text) const { put_log(kCurrent, log, text); }

  std::string log;  // named by the current time
};

TEST_F(KpiStoreTest, FirstPacketCreatesTheDirectory) {
  store(1, "x");
  EXPECT_EQ(mode(kVorn), 0750u);
  EXPECT_EQ(mode(kTemporary), 0740u);
  EXPECT_EQ(content(kTemporary), "x");
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiStoreTest, ExistingDirectoryIsUnchanged) {
  make_folder(kVorn);
  std::filesystem::permissions(at(kVorn), std::filesystem::perms(0700));
  store(1, "x");
  EXPECT_EQ(mode(kVorn), 0700u);
  EXPECT_EQ(content(kTemporary), "x");
}

TEST_F(KpiStoreTest, PacketIsDroppedWhenTheDirectoryCannotBeCreated) {
  std::filesystem::remove(at("/data"));
  receiver = {7, 2};
  store(1, "x", true);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: create parent dir /data/vorn failed, rc 2"));
  EXPECT_EQ(receiver.package_id, 7);
  make_folder("/data");
  trace.clear();
  store(2, "y");
  EXPECT_THAT(trace, IsEmpty());
  EXPECT_EQ(content(kTemporary), "y");
}

TEST_F(KpiStoreTest, DirectoryIsCreatedOnlyOnce) {
  store(1, "x");
  std::filesystem::remove_all(at(kVorn));
  store(2, "y");
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: Unable to open " + kTemporary + ", errno 2"));
  EXPECT_FALSE(has(kVorn));
}

TEST_F(KpiStoreTest, FirstPacketTruncatesAndOthersAppend) {
  put(kTemporary, "left over");
  store(2, "+");
  EXPECT_EQ(content(kTemporary), "left over+");
  store(1, "new");
  EXPECT_EQ(content(kTemporary), "new");
  store(0, "-");
  store(255, ".");
  EXPECT_EQ(content(kTemporary), "new-.");
}

TEST_F(KpiStoreTest, SkippedBytesAreNotStored) {
  store(1, "HEADpayload", false, 4);
  EXPECT_EQ(content(kTemporary), "payload");
}

TEST_F(KpiStoreTest, EachPackageHasAFileOfFourDigits) {
  uint8_t payload = 'x';
  for (uint8_t id : Bytes{0, 7, 42, 255})
    store_kpi_packet(kpi_store, receiver, {id, 1, false, 1, &payload}, 0);
  EXPECT_THAT(names(), UnorderedElementsAre("~vorn0000.log", "~vorn0007.log", "~vorn0042.log",
                                            "~vorn0255.log"));
}

TEST_F(KpiStoreTest, TemporaryFileThatCannotBeOpenedIsLogged) {
  make_folder(kTemporary);
  receiver = {7, 2};
  store(1, "x", true);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: Unable to open " + kTemporary + ", errno 21"));
  EXPECT_EQ(receiver.package_id, 7);
}

TEST_F(KpiStoreTest, FullDiskIsLoggedAndTheLastPacketIsNotMerged) {
  put_link(kTemporary, "/dev/full");
  receiver = {7, 2};
  store(1, "x", true);
  EXPECT_THAT(trace,
              ElementsAre("log: vornIndHndlr: Write to file " + kTemporary + " failed, errno 28"));
  EXPECT_EQ(receiver.package_id, 7);
}

TEST_F(KpiStoreTest, ShortWriteIsLoggedAndTheLastPacketIsNotMerged) {
  store(1, "ab");
  {
    FileSizeLimit limit(5);
    store(2, "cdef", true);
  }
  ASSERT_EQ(trace.size(), 1u);
  EXPECT_THAT(trace[0], testing::StartsWith("log: vornIndHndlr: Write to file " + kTemporary +
                                            " failed, errno "));
  EXPECT_EQ(content(kTemporary), "abcde");
}

TEST_F(KpiStoreTest, FirstRunResetsTheDirectoryAndMergesIntoANewLog) {
  EXPECT_THAT(merge("hello"),
              ElementsAreArray(taken() + not_linked(kCurrent) + directory_reset() + created(log) +
                               not_linked(kCurrent) + Lines{kLookUp + kCurrent} + links_synced() +
                               owner_and_mode_set(log) + appended(log)));
  EXPECT_EQ(content(log), "hello");
  EXPECT_EQ(mode(log), 0660u);
  EXPECT_EQ(target(kCurrent), log);
  EXPECT_FALSE(has(kPrevious));
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiStoreTest, LastPacketResetsTheReceiverAlsoWhenTheMergeFails) {
  receiver = {7, 2};
  begin("");
  failing["open " + log] = EACCES;
  merge("x");
  EXPECT_EQ(receiver.package_id, -1);
  EXPECT_EQ(receiver.expected_sequence, -1);
}

TEST_F(KpiStoreTest, PackageIsAppendedToALogThatHasContent) {
  begin("one");
  std::filesystem::permissions(at(log), std::filesystem::perms(0604));
  EXPECT_THAT(merge("two"), ElementsAreArray(begun() + appended(log)));
  EXPECT_EQ(content(log), "onetwo");
  EXPECT_EQ(mode(log), 0604u);
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiStoreTest, OwnerAndModeOfAnEmptyLogAreSetFirst) {
  begin("");
  EXPECT_THAT(merge("two"), ElementsAreArray(begun() + owner_and_mode_set(log) + appended(log)));
  EXPECT_EQ(mode(log), 0660u);
}

TEST_F(KpiStoreTest, PackagesOfAnySizeAreCopiedCompletely) {
  begin("");
  std::string all;
  for (size_t size : {1u, 255u, 256u, 257u, 512u, 65535u}) {
    std::string payload(size, static_cast<char>('a' + size % 26));
    payload.back() = '\n';
    merge(payload);
    all += payload;
  }
  EXPECT_EQ(content(log), all);
}

TEST_F(KpiStoreTest, PackageOfSeveralPacketsIsMergedAfterTheLast) {
  begin("");
  store(1, "a");
  store(2, "b");
  EXPECT_EQ(content(log), "");
  store(3, "c", true);
  EXPECT_EQ(content(log), "abc");
}

TEST_F(KpiStoreTest, FailureToSetOwnerAndModeIsLoggedAndTheMergeContinues) {
  begin("");
  failing = {{"chown", EPERM}, {"chmod", EROFS}};
  auto given = owner_and_mode_set(log);
  EXPECT_THAT(
      merge("x"),
      ElementsAreArray(
          begun() +
          Lines{given[0], "log: vorn_update_current_log: Unable to chown " + log + ", errno 1",
                given[1], "log: vorn_update_current_log: Unable to chmod " + log + ", errno 30"} +
          appended(log)));
  EXPECT_EQ(content(log), "x");
}

TEST_F(KpiStoreTest, MissingLinkResetsTheDirectoryButKeepsTemporaryFiles) {
  put("/data/vorn/vorn_20200101000000.log", "lost");
  put("/data/vorn/~vorn0003.log", "of another package");
  put_link(kPrevious, "/data/vorn/vorn_20200101000000.log");
  merge("x");
  EXPECT_THAT(names(),
              UnorderedElementsAre(".0001", log.substr(kVorn.size() + 1), "~vorn0003.log"));
  EXPECT_EQ(content(log), "x");
}

TEST_F(KpiStoreTest, LinkToAMissingLogResetsTheDirectory) {
  put_link(kCurrent, "/data/vorn/vorn_20200101000000.log");
  EXPECT_THAT(merge("x"),
              ElementsAreArray(begun() + directory_reset() + created(log) + not_linked(kCurrent) +
                               Lines{kLookUp + kCurrent} + links_synced() +
                               owner_and_mode_set(log) + appended(log)));
  EXPECT_EQ(target(kCurrent), log);
}

TEST_F(KpiStoreTest, LogThatCannotBeCreatedOnTheFirstRunKeepsTheTemporaryFile) {
  make_folder(log);
  EXPECT_THAT(merge("x"),
              ElementsAreArray(
                  taken() + not_linked(kCurrent) + directory_reset() +
                  Lines{"log: vorn_create_new_log: create new log " + log + " failed, errno 21",
                        "log: vorn_update_current_log: Unable to stat cur log file 2"}));
  EXPECT_EQ(content(kTemporary), "x");
}

TEST_F(KpiStoreTest, MissingTemporaryFileIsLogged) {
  begin("");
  EXPECT_THAT(merge_temporary(),
              ElementsAre("log: vorn_update_current_log: Unable to stat temp files, errno 2"));
  EXPECT_EQ(content(log), "");
}

TEST_F(KpiStoreTest, LogThatCannotBeOpenedKeepsTheTemporaryFile) {
  put_link(kCurrent, kVorn + "/folder");
  make_folder(kVorn + "/folder");
  EXPECT_THAT(merge("x"),
              ElementsAreArray(
                  begun() + Lines{"log: vorn_update_current_log: Unable to open files, errno 21"}));
  EXPECT_EQ(content(kTemporary), "x");
}

TEST_F(KpiStoreTest, TemporaryFileThatCannotBeOpenedAgainIsKept) {
  begin("one");
  put(kTemporary, "x");
  failing["open " + kTemporary] = EIO;
  EXPECT_THAT(merge_temporary(),
              ElementsAre(kLookUp + kCurrent,
                          "log: vorn_update_current_log: Unable to open files, errno 5"));
  EXPECT_EQ(content(kTemporary), "x");
  EXPECT_EQ(content(log), "one");
}

TEST_F(KpiStoreTest, TemporaryFileOfAFailedMergeIsNotMergedLater) {
  begin("");
  failing["open " + log] = EACCES;
  merge("first");
  failing.clear();
  merge("second");
  EXPECT_EQ(content(log), "second");
}

}  // namespace kpi_store_test
