// SPDX-License-Identifier: Apache-2.0
#include "src/host/base/parent.h"

#include <errno.h>
#include <unistd.h>

#include "src/host/base/log.h"

uint32_t qor_ext_instance_id = 0;

namespace {

// Written once, before any other thread starts, so no lock is needed.
int g_reply_fd = -1;
int g_unsolicited_fd = -1;

int write_frame(int fd, const void* buffer, size_t length) {
  if (write(fd, buffer, length) == -1) {
    LOGE("Write to parent failed %d", errno);
    return 0;
  }
  return 1;
}

}  // namespace

void set_parent_pipes(int reply_fd, int unsolicited_fd) {
  g_reply_fd = reply_fd;
  g_unsolicited_fd = unsolicited_fd;
}

int writeToParent(const void* buffer, size_t length) {
  return write_frame(g_reply_fd, buffer, length);
}

int writeUnsolToParent(const void* buffer, size_t length) {
  return write_frame(g_unsolicited_fd, buffer, length);
}
