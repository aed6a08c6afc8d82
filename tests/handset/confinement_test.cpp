// SPDX-License-Identifier: Apache-2.0
// The list of system calls that the daemon runs under. All other tests of the handset run under it
// too, so they show that it is sufficient.
#include <stdlib.h>

#include <filesystem>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/vorn.h"
#include "tests/handset/device_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::HasSubstr;
using testing::SizeIs;

constexpr char kPolicy[] = "/vendor/etc/seccomp_policy/qorext_client.policy";
constexpr char kChosen[] = "QOREXT_POLICY";  // read by the daemon's start in the handset
constexpr int kKilled = 128 + SIGSYS;        // as a shell reports it
constexpr int kRefused = 2;

class Confinement : public testing::Test {
 protected:
  ~Confinement() override { unsetenv(kChosen); }

  // Starts the daemon with a list of other lines.
  void start_with(const std::vector<std::string>& lines) {
    const char* path = "/data/other.policy";
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    put_file(handset.phone().folder() + path, text);
    setenv(kChosen, path, 1);
    handset.start_modem();
    handset.start_daemon();
  }
  std::vector<std::string> policy() {
    return lines_of(content_of(handset.phone().folder() + kPolicy));
  }
  std::vector<std::string> policy_without(const std::string& call) {
    auto lines = policy();
    std::erase_if(lines, [&](const std::string& line) { return line.starts_with(call + ":"); });
    EXPECT_THAT(lines, SizeIs(policy().size() - 1));
    return lines;
  }

  // Runs a command line of a shell under the phone's list.
  int status_of(const std::string& command) {
    const std::string& phone = handset.phone().folder();
    return run_command("sh -c '" + phone + "/system/bin/confine " + phone + kPolicy + " " +
                       command + "'; exit $?")
        .status;
  }

  Handset handset{Handset::off};
};

TEST_F(Confinement, AppliesToAllThreadsOfTheDaemon) {
  handset.start_modem();
  handset.start_serving();
  size_t threads = 0;
  for (const auto& thread : fs::directory_iterator(fmt::format("/proc/{}/task", handset.pid()))) {
    auto status = lines_of(content_of(thread.path() / "status"));
    EXPECT_THAT(status, Contains("Seccomp:\t2"));
    EXPECT_THAT(status, Contains("NoNewPrivs:\t1"));
    ++threads;
  }
  EXPECT_GT(threads, 1u);
}

TEST_F(Confinement, EndsTheDaemonAtACallThatIsNotListed) {
  start_with(policy_without("symlinkat"));
  handset.wait_until_serving();
  upload_log(handset.modem(), 7, "log");
  EXPECT_EQ(handset.exit_status(), "signal 31 (Bad system call)");
}

TEST_F(Confinement, EndsTheDaemonAtAnArgumentThatIsNotListed) {
  auto lines = policy_without("socket");
  lines.emplace_back("socket: arg0 == AF_UNIX");
  start_with(lines);
  EXPECT_EQ(handset.exit_status(), "signal 31 (Bad system call)");
}

TEST_F(Confinement, EndsProgramsThatDoWhatTheDaemonNeverDoes) {
  EXPECT_EQ(status_of("/bin/busybox true"), 0);
  const char* commands[] = {
      "/bin/busybox mknod /tmp/node c 1 3",          // creates a device node
      "/bin/busybox mount -t tmpfs none /tmp",       // mounts
      "/bin/busybox chroot / /bin/busybox true",     // changes the root folder
      "/bin/busybox nc 127.0.0.1 9",                 // opens an Internet socket
      "/bin/busybox sh -c \"/bin/busybox true &\"",  // creates a process
      "/bin/busybox kill -0 1",                      // signals another process
  };
  for (const char* command : commands) EXPECT_EQ(status_of(command), kKilled) << command;
}

TEST_F(Confinement, RefusesALineThatItDoesNotUnderstand) {
  for (const char* line : {"openat", "openat:", "openat: 2", "no_such_call: 1", "mmap: arg9 == 1",
                           "mmap: arg2 in PROT_EXEC", "mmap: arg2 == NO_SUCH_CONSTANT"}) {
    auto lines = policy();
    lines.emplace_back(line);
    start_with(lines);
    EXPECT_EQ(handset.exit_status(), fmt::format("exit status {}", kRefused)) << line;
  }
}

}  // namespace
}  // namespace e2e
