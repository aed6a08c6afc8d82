// SPDX-License-Identifier: Apache-2.0
// The daemon's user, root folder and sockets on the phone.
#include <linux/qrtr.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"
#include "tests/handset/device_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

class RadioUser : public testing::Test {
 protected:
  pid_t pid() { return handset.pid(); }

  // The address family of each of the daemon's sockets.
  std::vector<int> socket_families() {
    qorextctl::UniqueFd process(static_cast<int>(syscall(SYS_pidfd_open, pid(), 0)));
    std::vector<int> families;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(pid()) + "/fd")) {
      if (!fs::read_symlink(entry.path()).string().starts_with("socket:")) continue;
      int number = std::stoi(entry.path().filename());
      qorextctl::UniqueFd socket(
          static_cast<int>(syscall(SYS_pidfd_getfd, process.get(), number, 0)));
      int family = -1;
      socklen_t size = sizeof family;
      getsockopt(socket.get(), SOL_SOCKET, SO_DOMAIN, &family, &size);
      families.push_back(family);
    }
    return families;
  }

  Handset handset;
};

TEST_F(RadioUser, ReplacesRootPermanentlyAndKeepsTheGroups) {
  auto lines = lines_of(about_process(pid(), "status"));
  EXPECT_THAT(lines, Contains("Uid:\t1001\t1001\t1001\t1001"));
  EXPECT_THAT(lines, Contains("Gid:\t1001\t1001\t1001\t1001"));
  EXPECT_THAT(lines, Contains("Groups:\t2002 "));
  EXPECT_THAT(lines, Contains("CapEff:\t0000000000000000"));
}

TEST_F(RadioUser, UsesThePathsOfThePhoneUnchanged) {
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(pid()) + "/root"), handset.phone().folder());
  EXPECT_THAT(about_process(pid(), "environ"), Not(HasSubstr("QOREXT_PHONE_ROOT")));
}

TEST_F(RadioUser, ReachesTheModemOnlyOverQrtr) {
  EXPECT_THAT(socket_families(), SizeIs(3));
  EXPECT_THAT(socket_families(), Each(AF_QIPCRTR));
}

}  // namespace
}  // namespace e2e
