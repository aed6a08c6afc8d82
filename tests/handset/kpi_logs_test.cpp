// SPDX-License-Identifier: Apache-2.0
// Owners, groups and modes of the KPI logs on the phone's file system.

#include <sys/mount.h>

#include <filesystem>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/vorn.h"
#include "tests/handset/device_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::SizeIs;
using testing::StartsWith;

class KpiLogs : public testing::Test {
 protected:
  std::string at(const std::string& path) { return handset.phone().folder() + path; }
  // The target of an index link, which is a path on the phone.
  std::string target(const std::string& link) { return fs::read_symlink(at(link)); }

  // Uploads one packet of package 7 and waits until it has been processed.
  void upload(unsigned sequence, bool is_last, const Bytes& payload) {
    e2e::upload(handset.modem(), {7, sequence, is_last, payload});
    EXPECT_THAT(handset.messages_until_idle(), testing::IsEmpty());
  }
  void upload_package(const std::string& text) {
    upload(1, true, le32(kLogHeader) + characters(text));
  }

  Handset handset;
};

TEST_F(KpiLogs, BelongToTheRadioUserAndTheDiagnosticsGroup) {
  upload(1, false, le32(kLogHeader) + characters("first, "));
  EXPECT_EQ(fs::read_symlink(at("/data/vorn")), "/data/vendor/vorn");
  EXPECT_EQ(rights_of(at("/data/vorn")), "1001:2002 750");
  EXPECT_EQ(rights_of(at("/data/vorn/~vorn0007.log")), "1001:1001 740");
  EXPECT_EQ(content_of(at("/data/vorn/~vorn0007.log")), "first, ");

  upload(2, true, characters("last"));
  EXPECT_EQ(rights_of(at("/data/vorn/~vorn0007.log")), "none");
  std::string log = target("/data/vorn/.0001");
  EXPECT_THAT(log, StartsWith("/data/vorn/vorn_"));
  EXPECT_EQ(rights_of(at(log)), "1001:2002 660");
  EXPECT_EQ(content_of(at(log)), "first, last");
}

// A small file system at a path, until the end of the scope.
class SmallFileSystem {
 public:
  explicit SmallFileSystem(std::string path) : path_(std::move(path)) {
    EXPECT_EQ(mount("none", path_.c_str(), "tmpfs", 0, "size=64k,uid=1001,gid=2002,mode=750"), 0);
  }
  ~SmallFileSystem() { umount2(path_.c_str(), MNT_DETACH); }
  SmallFileSystem(const SmallFileSystem&) = delete;
  SmallFileSystem& operator=(const SmallFileSystem&) = delete;

 private:
  std::string path_;
};

// The packets fit, their copy in the log does not.
TEST_F(KpiLogs, AreCutBackWhenTheFileSystemIsFull) {
  SmallFileSystem full(at("/data/vendor/vorn"));
  upload_package("first");
  std::string log = target("/data/vorn/.0001");
  upload_in_packets(handset.modem(), 8, random_log(40000));
  EXPECT_THAT(handset.messages_until_idle(), testing::IsEmpty());
  EXPECT_THAT(handset.log().texts(),
              Contains("vorn_update_current_log: Unable to write " + log + ", errno 28"));
  EXPECT_EQ(content_of(at(log)), "first");
}

TEST_F(KpiLogs, GoToTheDropBoxWhenFull) {
  upload_package("old");
  std::string full = target("/data/vorn/.0001");
  fs::rename(at(full), at("/data/vorn/vorn_full.log"));
  full = "/data/vorn/vorn_full.log";
  fs::remove(at("/data/vorn/.0001"));
  fs::create_symlink(full, at("/data/vorn/.0001"));
  fs::resize_file(at(full), kLogLimit);

  upload_package("new");
  std::string log = target("/data/vorn/.0001");
  EXPECT_EQ(content_of(at(log)), "new");
  EXPECT_EQ(rights_of(at(log)), "1001:2002 660");
  EXPECT_EQ(target("/data/vorn/.0002"), full);
  std::vector<fs::path> entries;
  for (const auto& entry : fs::directory_iterator(at("/data/system/dropbox"))) {
    entries.push_back(entry.path());
  }
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_THAT(entries[0].filename(), StartsWith("modem_vorn@"));
  EXPECT_EQ(content_of(entries[0]), full);
}

}  // namespace
}  // namespace e2e
