// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/phone_root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "tests/e2e/support/value_or_throw.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kFolderMode = 0755;

void remove_content(const std::string& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
}

// The user, group and mode of a folder that the phone's init creates.
struct SystemFolder {
  const char* path;
  uid_t user;
  gid_t group;
  mode_t mode;
};
constexpr SystemFolder kDataFolders[] = {
    {"/data", 1000, 1000, 0771},             // system
    {"/data/vendor", 0, 0, 0771},            // root
    {"/data/vendor/vorn", 1001, 2002, 0750}  // radio, diag
};
constexpr const char* kLogs = "/data/vendor/vorn";
constexpr const char* kLogsLink = "/data/vorn";

// The log folder as platform/android/init/qorext_client.rc creates it.
void make_data(const std::string& root) {
  for (const SystemFolder& folder : kDataFolders) {
    std::string path = root + folder.path;
    fs::create_directories(path);
    if (chown(path.c_str(), folder.user, folder.group) != 0) throw_errno(path);
    if (chmod(path.c_str(), folder.mode) != 0) throw_errno(path);
  }
  fs::create_directory_symlink(kLogs, root + kLogsLink);
}

}  // namespace

PhoneRoot::PhoneRoot(Content content) : path_(fs::temp_directory_path() / "qorext.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw_errno(path_);
  chmod(path_.c_str(), kFolderMode);
  if (const char* handset = getenv("QOREXT_HANDSET")) {
    use_handset(handset);
    return;
  }
  folder_ = path_ + "/phone";
  daemon_root_ = folder_;
  modem_ = "unix:" + path_ + "/modem.sock";
  auto error = content == bare ? qorextctl::make_phone_folders(folder())
                               : qorextctl::prepare_phone(folder(), {});
  if (error) throw std::runtime_error(error->message);
}

void PhoneRoot::use_handset(const std::string& folder) {
  folder_ = folder;
  modem_ = "qrtr";
  for (const char* name : {"/data", "/proc", "/sys", qorextctl::kPropertiesFolder}) {
    fs::create_directories(folder_ + name);
    remove_content(folder_ + name);
    give_to_daemon(folder_ + name);
  }
  make_data(folder_);
  auto error = qorextctl::make_phone_folders(folder_);
  if (error) throw std::runtime_error(error->message);
}

PhoneRoot::~PhoneRoot() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void PhoneRoot::give_to_daemon(const std::string& path) const {
  if (!qorextctl::give_to_radio_user(path)) throw_errno(path);
}

void PhoneRoot::set_property(const std::string& name, const std::string& value) const {
  std::ofstream(folder() + qorextctl::kPropertiesFolder + "/" + name) << value;
}

std::string PhoneRoot::property(const std::string& name) const {
  std::ifstream file(folder() + qorextctl::kPropertiesFolder + "/" + name);
  if (!file) return "(none)";
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace e2e
