// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/channel.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace qorextctl {

using namespace std::chrono_literals;

void FramePipe::read_available() {
  constexpr size_t kPipeSize = 65536;
  size_t limit = std::min(pending().size() + kPipeSize, kMaxPending);
  while (!ended_ && pending().size() < limit && readable(Deadline::in(0ms))) read_once();
}

bool FramePipe::readable(Deadline deadline) const {
  pollfd entry{input_.get(), POLLIN, 0};
  for (;;) {
    int ready = poll(&entry, 1, deadline.remaining_ms());
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

void FramePipe::read_once() {
  uint8_t bytes[4096];
  ssize_t size = read(input_.get(), bytes, sizeof bytes);
  if (size < 0 && errno == EINTR) return;
  if (size <= 0) {
    ended_ = true;
    return;
  }
  buffer_.append({bytes, static_cast<size_t>(size)});
}

bool write_whole(int fd, View bytes) {
  ssize_t written = 0;
  do {
    written = write(fd, bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(bytes.size());
}

}  // namespace qorextctl
