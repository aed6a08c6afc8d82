// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/installation.h"

#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace e2e {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kRadioUser = 1001;

void give_away(const std::string& path) {
  bool given = geteuid() != 0 || chown(path.c_str(), kRadioUser, kRadioUser) == 0;
  if (!given) throw std::runtime_error("cannot give away " + path);
}

}  // namespace

void become_radio_user() {
  if (geteuid() == 0 && setuid(kRadioUser) != 0) throw std::runtime_error("cannot change user");
}

Installation::Installation() : path_(fs::temp_directory_path() / "qorext-bin.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder " + path_);
  fs::copy(QOREXT_BIN, path_ + "/bin", fs::copy_options::recursive);
  fs::copy(QOREXT_BIN "/../lib", path_ + "/lib", fs::copy_options::recursive);
  give_away(path_);
  for (const auto& entry : fs::recursive_directory_iterator(path_)) give_away(entry.path());
}

Installation::~Installation() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

}  // namespace e2e
