// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/faulty_handset.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <system_error>

#include "tests/e2e/support/value_or_throw.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kRadioUser = 1001;

void give_to_radio_user(const std::string& path) {
  if (geteuid() == 0 && chown(path.c_str(), kRadioUser, kRadioUser) != 0) throw_errno(path);
}

}  // namespace

void become_radio_user() {
  if (geteuid() == 0 && setuid(kRadioUser) != 0) throw_errno("setuid");
}

Installation::Installation() : path_(fs::temp_directory_path() / "qorext-bin.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw_errno(path_);
  fs::copy(QOREXT_BIN, path_ + "/bin", fs::copy_options::recursive);
  fs::copy(QOREXT_BIN "/../lib", path_ + "/lib", fs::copy_options::recursive);
  give_to_radio_user(path_);
  for (const auto& entry : fs::recursive_directory_iterator(path_))
    give_to_radio_user(entry.path());
}

Installation::~Installation() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

FaultSwitches::FaultSwitches() : path_(fs::temp_directory_path() / "qorext-switches.XXXXXX") {
  int fd = mkstemp(path_.data());
  if (fd < 0 || ftruncate(fd, sizeof(Switches)) != 0) throw_errno(path_);
  void* address = mmap(nullptr, sizeof(Switches), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  close(fd);
  if (address == MAP_FAILED) throw_errno(path_);
  switches_ = new (address) Switches{};
}

FaultSwitches::~FaultSwitches() {
  munmap(switches_, sizeof(Switches));
  unlink(path_.c_str());
}

FaultSwitches::Preload::Preload(const FaultSwitches& switches, const std::string& library) {
  setenv(kSwitchesVariable, switches.path_.c_str(), 1);
  setenv("LD_PRELOAD", library.c_str(), 1);
}

FaultSwitches::Preload::~Preload() {
  unsetenv("LD_PRELOAD");
  unsetenv(kSwitchesVariable);
}

FaultyHandset::FaultyHandset() {
  handset.start_modem();
  FaultSwitches::Preload preload(switches, installation.programs() + "/../lib/libqorext_faulty.so");
  start_daemon();
}

void FaultyHandset::exhaust_descriptors(bool exhausted) {
  rlimit limit{};
  ASSERT_EQ(prlimit(pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
  limit.rlim_cur = exhausted ? lowest_free_descriptor(pid()) : limit.rlim_max;
  ASSERT_EQ(prlimit(pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
}

void FaultyHandset::upload_package(uint8_t package) {
  handset.indicate(fmt::format("utils type=1 data={:02x}0101000800ffffffffa1a2a3a4", package));
}

}  // namespace e2e
