// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_logs.h"
#include "tests/unit/product/vorn_phone.h"

using testing::Contains;
using testing::ElementsAreArray;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace kpi_rotation_test {

constexpr time_t kHalfADay = 43200;

// A store whose current log was created ten seconds ago.
class KpiRotation : public VornPhone {
 protected:
  KpiRotation() : old_log(log_name(now - 10)), new_log(log_name(now)) {
    put_log(kCurrent, old_log, "old");
  }

  // Sets the time of the last hand-off.
  void count_from(time_t moment) { kpi_store.logs.handed_off = moment; }

  void grow(const std::string& log, size_t size) const {
    std::filesystem::resize_file(at(log), size);
  }

  void expect_rotated() const {
    EXPECT_EQ(target(kCurrent), new_log);
    EXPECT_EQ(target(kPrevious), old_log);
  }
  void expect_not_rotated() const {
    EXPECT_EQ(target(kCurrent), old_log);
    EXPECT_FALSE(has(kPrevious));
    EXPECT_THAT(trace, Not(Contains(StartsWith("call addText"))));
  }

  std::string old_log;
  std::string new_log;
};

TEST_F(KpiRotation, PackageUpToOneByteBelowTheLimitIsAppended) {
  grow(old_log, kLogLimit - 6);
  merge("12345");
  expect_not_rotated();
  EXPECT_EQ(std::filesystem::file_size(at(old_log)), kLogLimit - 1);
}

TEST_F(KpiRotation, LogOfTheLimitIsRotated) {
  grow(old_log, kLogLimit - 5);
  merge("12345");
  expect_rotated();
  EXPECT_EQ(std::filesystem::file_size(at(old_log)), kLogLimit - 5);
  EXPECT_EQ(content(new_log), "12345");
}

TEST_F(KpiRotation, EmptyPackageIsMerged) {
  put(kTemporary);
  EXPECT_THAT(merge_temporary(), ElementsAreArray(Lines{kLookUp + kCurrent} + appended(old_log)));
  EXPECT_EQ(content(old_log), "old");
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiRotation, LogOf29MiBAndPackageOf2MiBRotate) {
  grow(old_log, 29u << 20);
  put(kTemporary, std::string((2u << 20) - 1, 'x'));
  trace.clear();
  store(2, "x", true);
  expect_rotated();
  EXPECT_THAT(trace, IsSupersetOf(handed_off(old_log)));
  EXPECT_EQ(content(new_log), std::string(2u << 20, 'x'));
}

TEST_F(KpiRotation, FirstRotationHandsOffAndLinksBothLogs) {
  grow(old_log, kLogLimit);
  EXPECT_THAT(merge("x"),
              ElementsAreArray(begun() + handed_off(old_log) + created(new_log) +
                               Lines{kLookUp + kCurrent, kLookUp + kCurrent} +
                               not_linked(kPrevious) + Lines{kLookUp + kPrevious} + links_synced() +
                               owner_and_mode_set(new_log) + appended(new_log)));
  expect_rotated();
  EXPECT_EQ(kpi_store.logs.handed_off, now);
  EXPECT_EQ(mode(new_log), 0660u);
}

TEST_F(KpiRotation, DeletedNewLogIsCreatedAgainForItsFirstPackage) {
  umask(0);
  grow(old_log, kLogLimit);
  failing["chmod"] = EPERM;
  on_log = [this](const std::string& text) {
    if (text.ends_with("index name " + kPrevious)) std::filesystem::remove(at(new_log));
  };
  merge("x");
  EXPECT_EQ(content(new_log), "x");
  EXPECT_EQ(mode(new_log), 0770u);
}

TEST_F(KpiRotation, SecondRotationDeletesTheOldestLog) {
  std::string oldest = log_name(now - 20);
  put_log(kPrevious, oldest, "oldest");
  grow(old_log, kLogLimit);
  merge("x");
  Lines middle =
      Lines{kLookUp + kCurrent, kLookUp + kCurrent, kLookUp + kPrevious, kLookUp + kPrevious} +
      links_synced() + Lines{"log: vorn_create_new_log: remove old " + oldest};
  auto expected = begun() + handed_off(old_log) + created(new_log) + middle;
  ASSERT_GE(trace.size(), expected.size());
  EXPECT_THAT(std::vector(trace.begin(), trace.begin() + static_cast<long>(expected.size())),
              ElementsAreArray(expected));
  expect_rotated();
  EXPECT_FALSE(has(oldest));
}

TEST_F(KpiRotation, TwoLogsAreKeptAfterAnyNumberOfRotations) {
  for (int i = 0; i < 4; ++i) {
    grow(target(kCurrent), kLogLimit);
    now += 1;
    merge("x");
  }
  EXPECT_EQ(target(kCurrent), log_name(now));
  EXPECT_EQ(target(kPrevious), log_name(now - 1));
  EXPECT_THAT(names(),
              UnorderedElementsAre(".0001", ".0002", log_name(now).substr(kVorn.size() + 1),
                                   log_name(now - 1).substr(kVorn.size() + 1)));
}

TEST_F(KpiRotation, RotationThatDeletesALogCleansTheDirectoryByAge) {
  put_log(kPrevious, log_name(now - 20), "oldest");
  for (std::string stray : {"stray", "ahead", "young"}) put(kVorn + "/" + stray);
  set_age(kVorn + "/stray", kTwoDays);
  set_age(kVorn + "/ahead", -kTwoDays);
  set_age(old_log, 2 * kTwoDays);
  grow(old_log, kLogLimit);
  set_age(old_log, 2 * kTwoDays);
  merge("x");
  EXPECT_THAT(logs(), IsSupersetOf({"vorn_clean_dir: unexpected /data/vorn/stray",
                                    "vorn_clean_dir: unexpected /data/vorn/ahead"}));
  EXPECT_THAT(names(),
              UnorderedElementsAre(".0001", ".0002", "young", old_log.substr(kVorn.size() + 1),
                                   new_log.substr(kVorn.size() + 1)));
}

TEST_F(KpiRotation, RotationThatDeletesNoLogDoesNotClean) {
  put(kVorn + "/stray");
  set_age(kVorn + "/stray", kTwoDays);
  grow(old_log, kLogLimit);
  merge("x");
  EXPECT_TRUE(has(kVorn + "/stray"));
}

TEST_F(KpiRotation, FirstMergeOnlyStartsTheTimer) {
  ASSERT_EQ(kpi_store.logs.handed_off, 0);
  merge("x");
  expect_not_rotated();
  EXPECT_EQ(kpi_store.logs.handed_off, now);
  EXPECT_EQ(content(old_log), "oldx");
}

TEST_F(KpiRotation, FirstMergeRotatesBySize) {
  grow(old_log, kLogLimit);
  merge("x");
  expect_rotated();
}

TEST_F(KpiRotation, LogIsRotatedTwelveHoursAfterTheLastHandOff) {
  count_from(now - kHalfADay);
  EXPECT_THAT(merge("x"), IsSupersetOf(handed_off(old_log)));
  expect_rotated();
  EXPECT_EQ(kpi_store.logs.handed_off, now);
  EXPECT_EQ(content(new_log), "x");
  EXPECT_EQ(content(old_log), "old");
}

TEST_F(KpiRotation, LogIsNotRotatedASecondBeforeTheTwelveHours) {
  count_from(now - kHalfADay + 1);
  merge("x");
  expect_not_rotated();
  EXPECT_EQ(kpi_store.logs.handed_off, now - kHalfADay + 1);
}

TEST_F(KpiRotation, ClockMovedForwardRotatesAndClockMovedBackDoesNot) {
  merge("a");
  now -= 10 * kHalfADay;
  merge("b");
  expect_not_rotated();
  now += 11 * kHalfADay;
  new_log = log_name(now);
  merge("c");
  expect_rotated();
  EXPECT_EQ(content(old_log), "oldab");
}

TEST_F(KpiRotation, TimerRunsFromTheHandOffNotFromTheMerges) {
  merge("a");
  now += kHalfADay - 1;
  merge("b");
  expect_not_rotated();
  now += 1;
  new_log = log_name(now);
  merge("c");
  expect_rotated();
}

TEST_F(KpiRotation, EmptyLogIsRotatedButNotHandedOffAndDoesNotResetTheTimer) {
  grow(old_log, 0);
  count_from(now - kHalfADay);
  merge("x");
  expect_rotated();
  EXPECT_THAT(trace, Not(Contains(StartsWith("call addText"))));
  EXPECT_THAT(logs(), Not(Contains(testing::HasSubstr("dropbox"))));
  EXPECT_EQ(kpi_store.logs.handed_off, now - kHalfADay);
}

TEST_F(KpiRotation, RefusalOfTheDropBoxIsLoggedAndTheRotationContinues) {
  drop_box_accepts = false;
  grow(old_log, kLogLimit);
  auto expected = begun() + handed_off(old_log) + Lines{"log: vorn: send to dropbox failed!."} +
                  created(new_log);
  merge("x");
  ASSERT_GE(trace.size(), expected.size());
  EXPECT_THAT(std::vector(trace.begin(), trace.begin() + static_cast<long>(expected.size())),
              ElementsAreArray(expected));
  expect_rotated();
  EXPECT_EQ(kpi_store.logs.handed_off, now);
  EXPECT_EQ(content(new_log), "x");
}

TEST_F(KpiRotation, NewLogThatCannotBeCreatedKeepsTheTemporaryFileAndTheLinks) {
  make_folder(new_log);
  grow(old_log, kLogLimit);
  EXPECT_THAT(merge("x"),
              ElementsAreArray(
                  begun() + handed_off(old_log) +
                  Lines{"log: vorn_create_new_log: create new log " + new_log + " failed, errno 21",
                        "log: vorn_update_current_log: can't create new log."}));
  EXPECT_EQ(content(kTemporary), "x");
  EXPECT_EQ(target(kCurrent), old_log);
  EXPECT_FALSE(has(kPrevious));
}

}  // namespace kpi_rotation_test
