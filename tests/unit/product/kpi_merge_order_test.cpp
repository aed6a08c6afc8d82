// SPDX-License-Identifier: Apache-2.0
// The order of the steps of a merge, as seen in the directory between them.
#include <unistd.h>

#include "src/capture/kpi_logs.h"
#include "tests/unit/product/vorn_phone.h"

using testing::ElementsAreArray;
using testing::UnorderedElementsAreArray;

namespace kpi_merge_order_test {

class KpiMergeOrder : public VornPhone {
 protected:
  KpiMergeOrder() : log(log_name(now)) {}

  // Calls `look` when a line with this start is logged.
  void at_line(const std::string& start, std::function<void()> look) {
    on_log = [this, start, look = std::move(look)](const std::string& text) {
      if (!text.starts_with(start)) return;
      look();
      ++looks;
    };
  }

  // Only the log lines.
  static Lines without_calls(const Lines& steps) {
    Lines texts;
    for (const std::string& step : steps) {
      if (step.starts_with("log: ")) texts.push_back(step.substr(5));
    }
    return texts;
  }

  std::string log;
  int looks = 0;
};

TEST_F(KpiMergeOrder, TemporaryFileIsKeptUntilTheMergeIsReported) {
  at_line("vorn_update_current_log: update " + log + " succeed.", [this] {
    EXPECT_EQ(content(log), "hello");
    EXPECT_EQ(content(kTemporary), "hello");
  });
  merge("hello");
  EXPECT_EQ(looks, 1);
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiMergeOrder, OwnerAndModeAreSetWhileTheLogIsEmpty) {
  failing = {{"chown", EPERM}, {"chmod", EPERM}};
  at_line("vorn_update_current_log: Unable to ch", [this] { EXPECT_EQ(content(log), ""); });
  merge("hello");
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(content(log), "hello");
}

TEST_F(KpiMergeOrder, LogIsHandedOffBeforeItIsReplaced) {
  put_log(kCurrent, log_name(now - 10), "old");
  kpi_store.logs.handed_off = now - kTwoDays;
  at_line("vorn_update_current_log: send " + log_name(now - 10), [this] {
    EXPECT_EQ(target(kCurrent), log_name(now - 10));
    EXPECT_FALSE(has(log));
  });
  merge("hello");
  EXPECT_EQ(looks, 1);
  EXPECT_EQ(target(kCurrent), log);
}

TEST_F(KpiMergeOrder, ReceiverIsResetBeforeThePackageIsMerged) {
  receiver = {7, 2};
  at_line("vorn_update_current_log: update", [this] { EXPECT_EQ(receiver.package_id, -1); });
  merge("hello");
  EXPECT_EQ(looks, 1);
}

TEST_F(KpiMergeOrder, LogOfOneByteIsHandedOff) {
  put_log(kCurrent, log_name(now - 10), "x");
  kpi_store.logs.handed_off = now - kTwoDays;
  EXPECT_THAT(merge("hello"), testing::IsSupersetOf(handed_off(log_name(now - 10))));
  EXPECT_EQ(kpi_store.logs.handed_off, now);
}

TEST_F(KpiMergeOrder, StaleFileIsReportedBeforeItIsDeleted) {
  put(kVorn + "/stray");
  set_age(kVorn + "/stray", kTwoDays);
  at_line("vorn_clean_dir: unexpected", [this] { EXPECT_TRUE(has(kVorn + "/stray")); });
  vorn_clean_dir();
  EXPECT_EQ(looks, 1);
  EXPECT_FALSE(has(kVorn + "/stray"));
}

TEST_F(KpiMergeOrder, OldestLogIsDeletedBeforeThatIsReported) {
  put_log(kCurrent, log_name(now - 10), "old");
  put_log(kPrevious, log_name(now - 20), "oldest");
  kpi_store.logs.handed_off = now - kTwoDays;
  at_line("vorn_create_new_log: remove old " + log_name(now - 20),
          [this] { EXPECT_FALSE(has(log_name(now - 20))); });
  merge("hello");
  EXPECT_EQ(looks, 1);
}

// The clean-up resolves the second link for each entry that is not the first link's target: here
// two logs and the temporary file, in the order of the file system.
TEST_F(KpiMergeOrder, RotationThatDeletesALogLogsNothingElse) {
  std::string old = log_name(now - 10);
  std::string oldest = log_name(now - 20);
  put_log(kCurrent, old, "old");
  put_log(kPrevious, oldest, "oldest");
  kpi_store.logs.handed_off = now - kTwoDays;
  merge("hello");
  Lines links = {kLookUp + kCurrent, kLookUp + kCurrent, kLookUp + kPrevious, kLookUp + kPrevious};
  Lines sweep = {kLookUp + kCurrent, kLookUp + kCurrent, kLookUp + kPrevious, kLookUp + kCurrent,
                 kLookUp + kPrevious};
  EXPECT_THAT(logs(), UnorderedElementsAreArray(
                          without_calls(begun() + handed_off(old) + created(log) + links +
                                        Lines{"log: vorn_create_new_log: remove old " + oldest} +
                                        sweep + appended(log))));
}

TEST_F(KpiMergeOrder, LinkWithoutALogIsRemovedSilently) {
  make_folder(kVorn);
  at_line("vorn_create_new_log: create new", [this] { std::filesystem::remove(at(log)); });
  VornPath name = {};
  EXPECT_EQ(vorn_create_new_log(name, is_synced), 0);
  EXPECT_THAT(logs(), ElementsAreArray(without_calls(created(log) + not_linked(kCurrent) +
                                                     Lines{kLookUp + kCurrent})));
}

TEST_F(KpiMergeOrder, MissingLinkClearsTheCompleteName) {
  make_folder(kVorn);
  VornPath name;
  memset(name, 'x', sizeof name);
  EXPECT_EQ(vorn_get_filename(1, name), -1);
  EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '\0'));
}

// The lines of a new log whose links or directory fail: one line for each failure.
TEST_F(KpiMergeOrder, EachFailureOfALinkIsLoggedOnce) {
  const std::string kFailed = "vorn_create_new_log: Unable to ";
  const struct {
    std::map<std::string, int> failing;
    Lines lines;
    bool is_linked;
  } kRows[] = {
      {{}, {}, true},
      {{{"rename", EIO}}, {kFailed + "rename /data/vorn/.new, errno 5"}, true},
      {{{"symlink /data/vorn/.new", EIO}}, {kFailed + "link /data/vorn/.new, errno 5"}, true},
      {{{"symlink /data/vorn/.0001", EIO}}, {}, true},
      {{{"rename", EIO}, {"symlink /data/vorn/.0001", EPERM}},
       {kFailed + "rename /data/vorn/.new, errno 5", kFailed + "link /data/vorn/.0001, errno 1"},
       false},
      {{{"fsync /data/vorn", EIO}},
       {"vorn_update_current_log: Unable to sync /data/vorn, errno 5"},
       true},
  };
  for (const auto& row : kRows) {
    make_folder(kVorn);
    failing = row.failing;
    trace.clear();
    VornPath name = {};
    EXPECT_EQ(vorn_create_new_log(name, is_synced), 0);
    EXPECT_EQ(
        logs(),
        without_calls(created(log) + not_linked(kCurrent) + Lines{kLookUp + kCurrent}) + row.lines);
    EXPECT_EQ(target(kCurrent), row.is_linked ? log : "");
    EXPECT_FALSE(has(kVorn + "/.new"));
    std::filesystem::remove_all(at(kVorn));
  }
}

TEST_F(KpiMergeOrder, WriteOfNoBytesCountsAsAFullDisk) {
  put_log(kCurrent, log, "old");
  put(kTemporary, "x");
  file_write_limit = 0;
  errno = 0;
  merge_temporary();
  EXPECT_EQ(logs().back(), "vorn_update_current_log: Unable to write " + log + ", errno 28");
  store(1, "a");
  file_write_limit = {};
  store(2, "b", true);
  EXPECT_EQ(logs().back(), "vorn_update_current_log: Unable to write " + kTemporary + ", errno 28");
}

TEST_F(KpiMergeOrder, DescriptorZeroIsAValidFile) {
  int standard_input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  merge("hello");
  EXPECT_NE(close(STDIN_FILENO), 0) << "left open";
  dup2(standard_input, STDIN_FILENO);
  close(standard_input);
  EXPECT_EQ(content(log), "hello");
  EXPECT_FALSE(has(kTemporary));
}

}  // namespace kpi_merge_order_test
