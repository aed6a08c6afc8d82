// SPDX-License-Identifier: Apache-2.0
// The resources that the daemon uses: libraries, descriptors, memory, processor time.
#include <iostream>
#include <set>
#include <thread>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

using testing::ElementsAre;

constexpr size_t kMaxPrivateMemory = 1024;  // KiB
constexpr auto kIdleTime = std::chrono::seconds(2);

// The library names in an executable's dynamic section, without Debian's version suffixes, which
// the phone's names do not have.
std::set<std::string> needed_libraries(const std::string& path) {
  std::set<std::string> names;
  for (const std::string& line : lines_of(run_command("LC_ALL=C readelf -d " + path).output)) {
    size_t start = line.find('[');
    if (line.find("(NEEDED)") == std::string::npos || start == std::string::npos) continue;
    std::string name = line.substr(start + 1, line.find(']') - start - 1);
    names.insert(name.substr(0, name.find(".so") + 3));
  }
  return names;
}

TEST(Libraries, AreThoseOfThePhoneAndTheToolchains) {
  auto names = needed_libraries(QOREXT_BIN "/qorext_client");
  EXPECT_EQ(names.count("libc.so"), 1U);
  for (const char* name : {"libc.so", "libm.so", "libstdc++.so", "libgcc_s.so"}) names.erase(name);
  std::erase_if(names, [](const std::string& name) { return name.starts_with("ld-linux"); });
  EXPECT_THAT(names, ElementsAre("libcutils.so", "liblog.so", "libnativedropbox.so",
                                 "libqmi_cci.so", "libqmiqorext.so", "libqmiservices.so"));
}

TEST(Libraries, AreAllFound) {
  CommandResult result = run_command("LC_ALL=C ldd $BIN/qorext_client");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.find("not found"), std::string::npos) << result.output;
}

class Footprint : public InspectedHandset {
 protected:
  Footprint() {
    handset.start_modem();
    start_daemon();
    for (uint32_t id : {0x02000001U, 0x02000011U, 0x020000B0U, 0x020000C0U, 0x020000C1U}) {
      handset.serve(cdma(id));
    }
  }
};

// Besides the parent's pipes and standard input and output: a socket and an event descriptor for
// each of the modem's services, and one epoll descriptor for the indications.
TEST_F(Footprint, HasDescriptorsOnlyForTheParentAndTheModem) {
  auto before = descriptors_of(pid());
  EXPECT_EQ(before, (std::multiset<std::string>{"/dev/null", "pipe", "pipe", "pipe", "pipe", "pipe",
                                                "socket", "socket", "socket",
                                                "anon_inode:[eventfd]", "anon_inode:[eventfd]",
                                                "anon_inode:[eventfd]", "anon_inode:[eventpoll]"}));
  for (int i = 0; i < 50; ++i) handset.serve(cdma(0x020000C0));
  EXPECT_EQ(descriptors_of(pid()), before);
}

TEST_F(Footprint, UsesNoProcessorTimeWhenIdle) {
  uint64_t before = processor_time_of(pid());
  std::this_thread::sleep_for(kIdleTime);
  EXPECT_EQ(processor_time_of(pid()), before);
}

TEST_F(Footprint, HasLessThanAMebibyteOfPrivateMemory) {
  size_t size = private_memory_of(pid());
  std::cout << "private memory: " << size << " KiB" << std::endl;
  EXPECT_GT(size, 0U);
  EXPECT_LT(size, kMaxPrivateMemory);
}

// With a limit of 256 MiB of addresses, most of which are the libraries'.
TEST(DecodeFootprint, DoesNotGrowWithAnEndlessLine) {
  CommandResult result = run_command(
      "ulimit -v 262144; head -c 600000000 /dev/zero | tr '\\0' x | $BIN/qorextctl decode");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "qorextctl: decode: line 1: is longer than 1048576 bytes, skipped\n");
}

}  // namespace
}  // namespace e2e
