// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace qorextctl {

namespace {

constexpr mode_t kOwnerOnly = 0600;

// Pipes and devices keep the mode that they have.
bool make_private(int fd) {
  struct stat status;
  if (fstat(fd, &status) != 0) return false;
  return !S_ISREG(status.st_mode) || fchmod(fd, kOwnerOnly) == 0;
}

}  // namespace

UniqueFd open_private(const std::string& path, int flags) {
  UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, kOwnerOnly));
  return file.valid() && make_private(file.get()) ? std::move(file) : UniqueFd();
}

}  // namespace qorextctl
