// The moments of a merge, for a reader of the directory who looks in between.
#include "vorn_phone.h"

namespace {

class KpiMergeOrder : public VornPhone {
 protected:
  KpiMergeOrder() : log(log_name(now)) {}

  // Calls `look` when a line that begins like this is logged.
  void at_line(const std::string& start, std::function<void()> look) {
    on_log = [this, start, look = std::move(look)](const std::string& text) {
      if (!text.starts_with(start)) return;
      look();
      ++looks;
    };
  }

  std::string log;
  int looks = 0;
};

TEST_F(KpiMergeOrder, TemporaryFileStaysUntilTheMergeHasBeenReported) {
  at_line("vorn_update_current_log: update " + log + " succeed.", [this] {
    EXPECT_EQ(content(log), "hello");
    EXPECT_EQ(content(kTemporary), "hello");
  });
  merge("hello");
  EXPECT_EQ(looks, 1);
  EXPECT_FALSE(has(kTemporary));
}

TEST_F(KpiMergeOrder, ReadersGetTheLogBeforeItHoldsAnything) {
  failing = {{"chown", EPERM}, {"chmod", EPERM}};
  at_line("vorn_update_current_log: Unable to ch", [this] { EXPECT_EQ(content(log), ""); });
  merge("hello");
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(content(log), "hello");
}

TEST_F(KpiMergeOrder, LogIsHandedOffBeforeItIsReplaced) {
  put_log(kCurrent, log_name(now - 10), "old");
  kpi_store.handed_off = now - kTwoDays;
  at_line("vorn_update_current_log: send " + log_name(now - 10), [this] {
    EXPECT_EQ(target(kCurrent), log_name(now - 10));
    EXPECT_FALSE(has(log));
  });
  merge("hello");
  EXPECT_EQ(looks, 1);
  EXPECT_EQ(target(kCurrent), log);
}

}  // namespace
