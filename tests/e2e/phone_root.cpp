#include "phone_root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace e2e {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kRadioUser = 1001;
constexpr mode_t kFolderMode = 0755;
constexpr const char* kProperties = "/dev/__properties__";

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

void give_to_radio_user(const std::string& path) {
  if (geteuid() == 0 && chown(path.c_str(), kRadioUser, kRadioUser) != 0) fail(path);
}

void remove_content(const std::string& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
}

}  // namespace

PhoneRoot::PhoneRoot() : path_(fs::temp_directory_path() / "qorext.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) fail(path_);
  chmod(path_.c_str(), kFolderMode);
  const char* handset = getenv("QOREXT_HANDSET");
  folder_ = handset == nullptr ? path_ + "/phone" : handset;
  daemon_root_ = handset == nullptr ? folder_ : "";
  modem_ = handset == nullptr ? "unix:" + path_ + "/modem.sock" : "qrtr";
  make_folders();
}

void PhoneRoot::make_folders() {
  for (const char* name : {"/data", "/proc", "/sys", kProperties}) {
    fs::create_directories(folder() + name);
    remove_content(folder() + name);
    give_to_radio_user(folder() + name);
  }
  fs::create_directory(folder() + "/data/system");
  give_to_radio_user(folder() + "/data/system");
}

PhoneRoot::~PhoneRoot() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void PhoneRoot::set_property(const std::string& name, const std::string& value) const {
  std::ofstream(folder() + kProperties + "/" + name) << value;
}

std::string PhoneRoot::property(const std::string& name) const {
  std::ifstream file(folder() + kProperties + "/" + name);
  if (!file) return "(none)";
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace e2e
