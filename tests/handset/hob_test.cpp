// SPDX-License-Identifier: Apache-2.0
// The HOB save on real block devices. The partition is checked again after the handset has been
// switched off, so the test that wipes it must also save to it.
#include <algorithm>
#include <filesystem>

#include "tests/e2e/support/handset.h"
#include "tests/handset/device_files.h"
#include "tools/qorextctl/modem/modem_control.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kRam = "/dev/qor_hob_ram";
constexpr const char* kPartition = "/dev/block/bootdevice/by-name/dhob";
constexpr const char* kShared = "/usr/share/handset/hob";  // the content of the RAM
constexpr size_t kSize = 0x8000;
constexpr char kWiped = '\xEE';

class HobSave : public testing::Test {
 protected:
  HobSave() { handset.start_modem(); }

  // The daemon's two HOB reports: that it is ready, and the result of the save.
  Texts reports() {
    auto count = [this] {
      auto requests = qorextctl::Json::parse(handset.modem().value("requests", "/requests"));
      return std::count_if(requests.begin(), requests.end(),
                           [](const auto& request) { return request["message"] == "hob"; });
    };
    wait_until([&] { return count() >= 2; });
    auto found = handset.modem_requests();
    std::erase_if(found, [](const auto& request) { return !request.starts_with("qorext hob "); });
    return found;
  }
  static std::string report(int state) {
    return vendor_request("hob", fmt::format(R"({{"state":{}}})", state));
  }
  const std::string kReady = report(0xFF);

  static std::string saved() { return content_of(kPartition).substr(0, kSize); }
  static void wipe() {
    std::string content = content_of(kPartition);
    put_file(kPartition, content.replace(0, kSize, kSize, kWiped));
  }

  Handset handset{Handset::off};
};

TEST_F(HobSave, CopiesTheSharedMemoryToThePartition) {
  wipe();
  handset.start_serving();
  handset.indicate("hob_save");
  EXPECT_THAT(reports(), ElementsAre(kReady, report(1)));
  EXPECT_EQ(saved(), content_of(kShared));
}

// The system calls that change the user and write to the partition.
TEST_F(HobSave, WritesThroughToThePartitionAsTheRadioUser) {
  handset.phone().use_programs("/system/traced");
  handset.start_serving();
  handset.indicate("hob_save");
  EXPECT_THAT(reports(), ElementsAre(kReady, report(1)));
  handset.end_of_file();
  handset.exit_status();

  std::string trace = content_of("/tmp/trace");
  EXPECT_THAT(trace, HasSubstr("setuid(1001) "));
  EXPECT_THAT(trace, ContainsRegex("by-name/dhob\", O_RDWR\\|O_SYNC"));
  EXPECT_THAT(trace, ContainsRegex("write\\([0-9]+, .*, 32768\\) += 32768"));
}

TEST_F(HobSave, FailsWithoutTheDevice) {
  handset.start_serving();
  std::filesystem::rename(kRam, "/dev/hidden");
  handset.indicate("hob_save");
  EXPECT_THAT(reports(), ElementsAre(kReady, report(0)));
  std::filesystem::rename("/dev/hidden", kRam);
  EXPECT_THAT(handset.log().texts(), Contains("dhob_write: Unable to open /dev/qor_hob_ram"));
}

}  // namespace
}  // namespace e2e
