// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/switchboard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <system_error>

namespace e2e {

namespace {

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

}  // namespace

Switchboard::Switchboard()
    : path_(std::filesystem::temp_directory_path() / "qorext-switches.XXXXXX") {
  int fd = mkstemp(path_.data());
  if (fd < 0 || ftruncate(fd, sizeof(Switches)) != 0) fail(path_);
  void* address = mmap(nullptr, sizeof(Switches), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  close(fd);
  if (address == MAP_FAILED) fail(path_);
  switches_ = new (address) Switches{};
}

Switchboard::~Switchboard() {
  munmap(switches_, sizeof(Switches));
  unlink(path_.c_str());
}

Switchboard::Wiring::Wiring(const Switchboard& board, const std::string& library) {
  setenv(kSwitchesVariable, board.path_.c_str(), 1);
  setenv("LD_PRELOAD", library.c_str(), 1);
}

Switchboard::Wiring::~Wiring() {
  unsetenv("LD_PRELOAD");
  unsetenv(kSwitchesVariable);
}

}  // namespace e2e
