// SPDX-License-Identifier: Apache-2.0
// The files of the KPI logs that the modem uploads.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/e2e/support/handset_fixture.h"
#include "tests/e2e/support/vorn.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

constexpr char kTemporary[] = "~vorn0007.log";

Bytes record_message(const Bytes& record) { return generic_message(hex("01040004"), record); }

class Kpi : public HandsetTest {
 protected:
  // Returns the daemon's log of all packets sent so far.
  Texts processed() {
    EXPECT_THAT(handset.messages_until_idle(), testing::IsEmpty());
    Texts log = handset.log().texts(mark_);
    mark_ += log.size();
    return log;
  }

  void send(unsigned package, unsigned sequence, bool is_last, const std::string& text) {
    upload(handset.modem(), {package, sequence, is_last, characters(text)});
  }
  void send_first(unsigned package, const std::string& text, bool is_last = false) {
    upload(handset.modem(), {package, 1, is_last, le32(kLogHeader) + characters(text)});
  }

  std::string log_content() const { return vorn().content(vorn().linked(1)); }
  VornFolder vorn() const { return VornFolder(handset.phone()); }

  void put_current_log(size_t size = 0) const {
    vorn().put(kCurrentLog, "current log", size);
    vorn().link(1, kCurrentLog);
  }
  fs::path drop_box() const { return handset.phone().folder() + "/data/system/dropbox"; }

 private:
  size_t mark_ = handset.log().size();
};

std::string mode_of(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return fmt::format("{:o}", status.st_mode & ALLPERMS);
}

TEST_F(Kpi, PackageBecomesALog) {
  send_first(7, "one, ");
  send(7, 2, false, "two, ");
  EXPECT_THAT(processed(), Contains("vornIndHndlr: header 0x1c0ffee"));
  std::string folder = handset.phone().folder() + "/data/vorn";
  EXPECT_EQ(mode_of(folder), "750");
  EXPECT_EQ(mode_of(folder + "/" + kTemporary), "740");
  EXPECT_EQ(vorn().content(kTemporary), "one, two, ");

  send(7, 3, true, "three");
  Texts log = processed();
  EXPECT_EQ(log_content(), "one, two, three");
  std::string name = vorn().linked(1);
  EXPECT_THAT(name, testing::MatchesRegex("vorn_[0-9]{14}\\.log"));
  EXPECT_THAT(log,
              IsSupersetOf({std::string("vornIndHndlr: received the last pkg of 7"),
                            std::string("vorn_update_current_log: clean the whole dir!"),
                            "vorn_create_new_log: create new /data/vorn/" + name + ".",
                            "vorn_update_current_log: update /data/vorn/" + name + " succeed."}));
  EXPECT_THAT(vorn().names(), ElementsAre(".0001", name));
}

TEST_F(Kpi, LogHasTheOwnerAndModeOfItsReaders) {
  send_first(7, "log", true);
  Texts log = processed();
  std::string path = handset.phone().folder() + "/data/vorn/" + vorn().linked(1);
  EXPECT_EQ(mode_of(path), "660");
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  // Only root or a member of the group can give a file to the group.
  std::string failed = "vorn_update_current_log: Unable to chown /data/vorn/" + vorn().linked(1);
  bool is_given = testing::Value(log, Not(Contains(StartsWith(failed))));
  EXPECT_EQ(status.st_gid == 2002, is_given);
  EXPECT_EQ(status.st_uid, geteuid() == 0 ? 1001 : geteuid());
}

TEST_F(Kpi, ConsecutivePackagesAreAppended) {
  for (unsigned package = 0; package < 256; package += 51) {
    send_first(package, fmt::format("<{}>", package), true);
  }
  processed();
  EXPECT_EQ(log_content(), "<0><51><102><153><204><255>");
}

TEST_F(Kpi, HeaderIsStoredUnlessItStartsALog) {
  upload(handset.modem(), {7, 1, true, hex("FFFFFFFF") + characters("a")});
  upload(handset.modem(), {7, 1, true, hex("EEFFC004") + characters("b")});
  EXPECT_THAT(processed(), Contains("vornIndHndlr: unknown header 0x4c0ffee"));
  EXPECT_EQ(log_content(),
            "\xFF\xFF\xFF\xFF"
            "a\xEE\xFF\xC0\x04"
            "b");
}

TEST_F(Kpi, RecordsAreForwardedInsteadOfStored) {
  for (const char* header : {"EEFFC002", "EEFFC003", "EEFFC006", "EEFFC007", "EEFFC008"}) {
    Bytes record = hex(header) + characters("record");
    upload(handset.modem(), {7, 1, true, record});
    EXPECT_EQ(handset.next_message(), as_hex(record_message(record))) << header;
  }
  Bytes longest = hex("EEFFC002") + counting(296);
  upload(handset.modem(), {7, 1, true, longest});
  longest.resize(300 & 0xFF);
  EXPECT_EQ(handset.next_message(), as_hex(record_message(longest)));
  EXPECT_FALSE(fs::exists(handset.phone().folder() + "/data/vorn"));
}

TEST_F(Kpi, RejectedPacketsAreLoggedAndDropThePackage) {
  struct {
    unsigned package, sequence;
    const char* payload;
    const char* text;
  } rows[] = {
      {8, 2, "x", "vornIndHndlr: wrong pckage id [8] received, cur [7]"},
      {7, 3, "x", "vornIndHndlr: wrong seq id [3] received, cur [2]"},
      {7, 2, "", "vornIndHndlr: zero pckage size"},
      {7, 1, "1234", "vornIndHndlr: bad header"},
  };
  for (const auto& row : rows) {
    send_first(7, "begun, ");
    send(row.package, row.sequence, true, row.payload);
    EXPECT_THAT(processed(), Contains(row.text));
    EXPECT_EQ(vorn().content(kTemporary), "begun, ") << row.text;
    EXPECT_EQ(vorn().linked(1), "") << row.text;
  }
}

TEST_F(Kpi, InterleavedPackageIsStoredFromItsSecondPacketOn) {
  send_first(7, "lost");
  send_first(8, "lost too");
  send(8, 2, false, "second, ");
  send(8, 3, true, "third");
  EXPECT_THAT(processed(), Contains("vornIndHndlr: wrong pckage id [8] received, cur [7]"));
  EXPECT_EQ(log_content(), "second, third");
}

TEST_F(Kpi, PackageCanStartInTheMiddle) {
  send(7, 200, false, "in the ");
  send(7, 201, true, "middle");
  processed();
  EXPECT_EQ(log_content(), "in the middle");
}

TEST_F(Kpi, LostLinkClearsTheDirectory) {
  put_current_log();
  vorn().put("~vorn0009.log", "another package");
  fs::remove(vorn().path(".0001"));
  send_first(7, "new log", true);
  EXPECT_THAT(processed(), Contains("vorn_reset_dir DONE!"));
  EXPECT_FALSE(vorn().has(kCurrentLog));
  EXPECT_EQ(vorn().content("~vorn0009.log"), "another package");
  EXPECT_EQ(log_content(), "new log");
}

TEST_F(Kpi, LogGrowsToOneByteBelowTheLimit) {
  put_current_log(kLogLimit - 8);
  send_first(7, "new log", true);
  processed();
  EXPECT_EQ(vorn().linked(1), kCurrentLog);
  EXPECT_EQ(vorn().size(kCurrentLog), kLogLimit - 1);
  EXPECT_EQ(vorn().linked(2), "");
  EXPECT_FALSE(fs::exists(drop_box()));
}

TEST_F(Kpi, LogAtTheLimitGoesToTheDropBoxAndBecomesThePreviousOne) {
  put_current_log(kLogLimit - 7);
  vorn().put(kPreviousLog, "previous log");
  vorn().link(2, kPreviousLog);
  vorn().put("stray", "old");
  vorn().set_age("stray", 172800);
  vorn().put("~vorn0009.log", "from the future");
  vorn().set_age("~vorn0009.log", -172900);
  vorn().put("~vorn0010.log", "recent");
  send_first(7, "new log", true);
  std::string path = std::string("/data/vorn/") + kCurrentLog;
  EXPECT_THAT(processed(),
              IsSupersetOf({"vorn_update_current_log: send " + path + " to dropbox.",
                            std::string("vorn_clean_dir: unexpected /data/vorn/stray"),
                            std::string("vorn_clean_dir: unexpected /data/vorn/~vorn0009.log")}));
  EXPECT_EQ(log_content(), "new log");
  EXPECT_EQ(vorn().linked(2), kCurrentLog);
  EXPECT_EQ(vorn().size(kCurrentLog), kLogLimit - 7);
  EXPECT_THAT(vorn().names(),
              ElementsAre(".0001", ".0002", kCurrentLog, vorn().linked(1), "~vorn0010.log"));
  std::vector<fs::path> entries(fs::directory_iterator{drop_box()}, {});
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(entries[0].filename().string().starts_with("modem_vorn@"));
}

TEST_F(Kpi, RefusalOfTheDropBoxIsLoggedAndTheRotationContinues) {
  put_current_log(kLogLimit);
  std::ofstream(drop_box()) << "no folder";
  send_first(7, "new log", true);
  EXPECT_THAT(processed(), Contains("vorn: send to dropbox failed!."));
  EXPECT_EQ(vorn().linked(2), kCurrentLog);
  EXPECT_EQ(log_content(), "new log");
}

TEST_F(Kpi, DirectoryThatCannotBeCreatedIsLoggedAndRetried) {
  std::string data = handset.phone().folder() + "/data";
  chmod(data.c_str(), 0555);
  send_first(7, "lost", true);
  EXPECT_THAT(processed(), Contains("vornIndHndlr: create parent dir /data/vorn failed, rc 13"));
  chmod(data.c_str(), 0755);
  send_first(7, "stored", true);
  processed();
  EXPECT_EQ(log_content(), "stored");
}

TEST_F(Kpi, DirectoryThatCannotBeWrittenLeavesTheLogsUnchanged) {
  put_current_log();
  chmod(vorn().path("").c_str(), 0555);
  send_first(7, "lost", true);
  EXPECT_THAT(processed(),
              Contains("vornIndHndlr: Unable to open /data/vorn/~vorn0007.log, errno 13"));
  EXPECT_EQ(log_content(), "current log");
}

TEST_F(Kpi, FullDiskIsLoggedAndTheLastPacketIsNotMerged) {
  put_current_log();
  fs::create_symlink("/dev/full", vorn().path(kTemporary));
  send_first(7, "lost", true);
  EXPECT_THAT(processed(),
              Contains("vornIndHndlr: Write to file /data/vorn/~vorn0007.log failed, errno 28"));
  EXPECT_EQ(log_content(), "current log");
}

}  // namespace
}  // namespace e2e
