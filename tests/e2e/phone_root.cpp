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

}  // namespace

PhoneRoot::PhoneRoot() : path_(fs::temp_directory_path() / "qorext.XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) fail(path_);
  chmod(path_.c_str(), kFolderMode);
  for (const char* name : {"/data/system", "/proc", "/sys", kProperties}) {
    fs::create_directories(folder() + name);
  }
  give_to_daemon(folder());
  for (const auto& entry : fs::recursive_directory_iterator(folder())) {
    give_to_daemon(entry.path());
  }
}

PhoneRoot::~PhoneRoot() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void PhoneRoot::give_to_daemon(const std::string& path) const {
  if (geteuid() == 0 && chown(path.c_str(), kRadioUser, kRadioUser) != 0) fail(path);
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
