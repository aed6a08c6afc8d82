// SPDX-License-Identifier: Apache-2.0
// The HOB save on real block devices. What it leaves on the partition is looked at once more when
// the handset has been switched off: the test that wipes the partition saves to it as well.
#include <gmock/gmock.h>
#include <sched.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/support/handset.h"
#include "tests/handset/device_files.h"
#include "tools/qorextctl/modem/modem_control.h"

namespace e2e {
namespace {

using qorextctl::Deadline;
using testing::Contains;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kRam = "/dev/qor_hob_ram";
constexpr const char* kPartition = "/dev/block/bootdevice/by-name/dhob";
constexpr const char* kShared = "/usr/share/handset/hob";  // what lies in the RAM
constexpr size_t kSize = 0x8000;
constexpr char kWiped = '\xEE';

class HobSave : public testing::Test {
 protected:
  HobSave() { handset.start_modem(); }

  void start(unsigned instance) {
    handset.start_daemon(instance);
    handset.wait_until_serving();
  }

  // The daemon's two HOB messages: that it is ready, and how the save went.
  std::vector<std::string> answers() {
    auto count = [this] {
      auto requests = qorextctl::Json::parse(handset.modem().value("requests", "/requests"));
      return std::count_if(requests.begin(), requests.end(),
                           [](const auto& request) { return request["message"] == "hob"; });
    };
    Deadline deadline = Deadline::in(kPatience);
    while (count() < 2 && !deadline.passed()) sched_yield();
    auto found = handset.modem_requests();
    std::erase_if(found, [](const auto& request) { return !request.starts_with("qorext hob "); });
    return found;
  }
  static std::string told(int outcome) {
    return asked("qorext", "hob", fmt::format(R"({{"state":{}}})", outcome));
  }
  const std::string kReady = told(0xFF);

  static std::string saved() { return content_of(kPartition).substr(0, kSize); }
  static void wipe() {
    std::string content = content_of(kPartition);
    put_file(kPartition, content.replace(0, kSize, kSize, kWiped));
  }

  Handset handset{Handset::off};
};

TEST_F(HobSave, BringsTheSharedMemoryToThePartition) {
  wipe();
  start(0);
  handset.modem().command("indicate hob_save");
  EXPECT_THAT(answers(), ElementsAre(kReady, told(1)));
  EXPECT_EQ(saved(), content_of(kShared));
}

// Everything that the daemon does about its user and the partition, as the kernel sees it.
TEST_F(HobSave, WritesThroughToThePartitionAsTheRadioUser) {
  handset.phone().use_programs("/system/traced");
  start(0);
  handset.modem().command("indicate hob_save");
  EXPECT_THAT(answers(), ElementsAre(kReady, told(1)));
  handset.end_of_file();
  handset.exit_status();

  std::string trace = content_of("/tmp/trace");
  EXPECT_THAT(trace, HasSubstr("setuid(1001) "));
  EXPECT_THAT(trace, ContainsRegex("by-name/dhob\", O_RDWR\\|O_SYNC"));
  EXPECT_THAT(trace, ContainsRegex("write\\([0-9]+, .*, 32768\\) += 32768"));
}

TEST_F(HobSave, FailsWithoutTheDevice) {
  start(0);
  std::filesystem::rename(kRam, "/dev/hidden");
  handset.modem().command("indicate hob_save");
  EXPECT_THAT(answers(), ElementsAre(kReady, told(0)));
  std::filesystem::rename("/dev/hidden", kRam);
  EXPECT_THAT(handset.log().texts(), Contains("dhob_write: Unable to open /dev/qor_hob_ram"));
}

}  // namespace
}  // namespace e2e
