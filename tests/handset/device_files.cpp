// SPDX-License-Identifier: Apache-2.0
#include "tests/handset/device_files.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace e2e {

std::string rights_of(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return "none";
  return fmt::format("{}:{} {:o}", status.st_uid, status.st_gid, status.st_mode & ALLPERMS);
}

void put_file(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

std::string about_process(pid_t pid, const std::string& name) {
  return content_of(fmt::format("/proc/{}/{}", pid, name));
}

}  // namespace e2e
