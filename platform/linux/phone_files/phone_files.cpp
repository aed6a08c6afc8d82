// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/phone_files/phone_files.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace phone_files {
namespace {

constexpr std::string_view kNameCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._@:-";
constexpr mode_t kMode = 0644;

bool write_all(int fd, std::string_view content) {
  while (!content.empty()) {
    ssize_t written = write(fd, content.data(), content.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) content.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

bool fill(int fd, std::string_view content) {
  bool is_written = fchmod(fd, kMode) == 0 && write_all(fd, content);
  return close(fd) == 0 && is_written;
}

// link() fails when the name exists, rename() replaces the file.
bool move_to(const std::string& from, const std::string& to, Existing existing) {
  if (existing == Existing::replace) return rename(from.c_str(), to.c_str()) == 0;
  return link(from.c_str(), to.c_str()) == 0;
}

}  // namespace

bool is_plain_name(std::string_view name) {
  if (name.empty() || name.front() == '.') return false;
  return name.find_first_not_of(kNameCharacters) == std::string_view::npos;
}

bool store(const std::string& path, std::string_view content, Existing existing) {
  std::filesystem::path target(path);
  std::error_code ignored;
  std::filesystem::create_directories(target.parent_path(), ignored);

  std::string temporary = target.parent_path() / ("." + target.filename().string() + ".XXXXXX");
  int fd = mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return false;
  bool is_stored = fill(fd, content) && move_to(temporary, path, existing);
  int saved = errno;
  if (!is_stored || existing == Existing::keep) unlink(temporary.c_str());
  errno = saved;
  return is_stored;
}

}  // namespace phone_files
