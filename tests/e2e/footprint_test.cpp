// What the daemon needs of the system: libraries, descriptors, memory, processor time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>
#include <thread>

#include "command.h"
#include "handset.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;

constexpr uid_t kRadioUser = 1001;
constexpr size_t kMostPrivateMemory = 1024;  // KiB
constexpr auto kIdleTime = std::chrono::seconds(2);

// The names in the dynamic section of an executable, without the numbers that Debian gives to
// libraries which have none on the phone.
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

// Copies of the executables and libraries that every user can run.
class Installation {
 public:
  Installation() : path_(fs::temp_directory_path() / "qorext-bin.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder " + path_);
    fs::copy(QOREXT_BIN, path_ + "/bin", fs::copy_options::recursive);
    fs::copy(QOREXT_BIN "/../lib", path_ + "/lib", fs::copy_options::recursive);
    for (const char* name : {"", "/bin", "/lib"}) give_away(path_ + name);
  }
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
  ~Installation() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  std::string programs() const { return path_ + "/bin"; }

 private:
  static void give_away(const std::string& folder) {
    bool given = geteuid() != 0 || chown(folder.c_str(), kRadioUser, kRadioUser) == 0;
    if (!given) throw std::runtime_error("cannot give away " + folder);
  }

  std::string path_;
};

// The kernel shows the insides of a process that has changed its user only to the most privileged.
// So the whole test becomes the radio user, and the daemon has nothing left to change.
class Footprint : public testing::Test {
 protected:
  Footprint() {
    if (geteuid() == 0 && setuid(kRadioUser) != 0) throw std::runtime_error("cannot change user");
    handset.emplace(Handset::off);
    handset->phone().use_programs(installation.programs());
    handset->start_modem();
    handset->start_daemon();
    handset->wait_until_serving();
    for (uint32_t id : {0x02000001U, 0x02000011U, 0x020000B0U, 0x020000C0U, 0x020000C1U}) {
      handset->serve(cdma(id));
    }
  }

  fs::path of_daemon(const std::string& name) {
    return "/proc/" + std::to_string(handset->daemon().process().pid()) + "/" + name;
  }

  // What each open descriptor is: "pipe", "socket", "anon_inode:[eventfd]", a path.
  std::multiset<std::string> descriptors() {
    std::multiset<std::string> kinds;
    for (const auto& entry : fs::directory_iterator(of_daemon("fd"))) {
      std::string target = fs::read_symlink(entry.path());
      bool is_numbered = target.starts_with("pipe:") || target.starts_with("socket:");
      kinds.insert(is_numbered ? target.substr(0, target.find(':')) : target);
    }
    return kinds;
  }

  // In clock ticks, of all threads.
  uint64_t processor_time() {
    std::ifstream file(of_daemon("stat"));
    std::string text{std::istreambuf_iterator<char>(file), {}};
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i) fields >> skipped;
    uint64_t user = 0;
    uint64_t system = 0;
    fields >> user >> system;
    return user + system;
  }

  // In KiB: its share of every mapping but those of shared libraries' files.
  size_t private_memory() {
    std::ifstream file(of_daemon("smaps"));
    bool is_library = false;
    size_t sum = 0;
    for (std::string line; std::getline(file, line);) {
      bool is_mapping = line.find('-') < line.find(' ');
      if (is_mapping) is_library = line.find(".so") != std::string::npos;
      if (!is_library && line.starts_with("Pss:")) sum += std::stoul(line.substr(4));
    }
    return sum;
  }

  Installation installation;
  std::optional<Handset> handset;
};

// Beside the parent's pipes and standard input and output: a socket to each of the modem's
// services, and with it what wakes up a wait for it; and where indications are waited for.
TEST_F(Footprint, HasNoDescriptorsButThoseOfTheParentAndTheModem) {
  auto before = descriptors();
  EXPECT_EQ(before, (std::multiset<std::string>{"/dev/null", "pipe", "pipe", "pipe", "pipe", "pipe",
                                                "socket", "socket", "socket",
                                                "anon_inode:[eventfd]", "anon_inode:[eventfd]",
                                                "anon_inode:[eventfd]", "anon_inode:[eventpoll]"}));
  for (int i = 0; i < 50; ++i) handset->serve(cdma(0x020000C0));
  EXPECT_EQ(descriptors(), before);
}

TEST_F(Footprint, UsesNoProcessorTimeWhenIdle) {
  uint64_t before = processor_time();
  std::this_thread::sleep_for(kIdleTime);
  EXPECT_EQ(processor_time(), before);
}

TEST_F(Footprint, NeedsLessThanAMebibyteOfItsOwn) {
  size_t size = private_memory();
  std::cout << "private memory: " << size << " KiB" << std::endl;
  EXPECT_GT(size, 0U);
  EXPECT_LT(size, kMostPrivateMemory);
}

}  // namespace
}  // namespace e2e
