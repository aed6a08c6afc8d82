// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include "tools/qorextctl/daemon/channel.h"

namespace qorextctl {

namespace {

constexpr size_t kWidth = 30;
constexpr std::chrono::milliseconds kPause{100};

void put(int fd, const std::string& text) {
  write_whole(fd, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

}  // namespace

std::string progress_text(size_t done, size_t all, double seconds) {
  size_t hashes = all == 0 ? kWidth : kWidth * done / all;
  std::string text = fmt::format("[{}{}] {}/{}", std::string(hashes, '#'),
                                 std::string(kWidth - hashes, '.'), done, all);
  if (done == 0 || seconds <= 0) return text;
  double rate = static_cast<double>(done) / seconds;
  return text + fmt::format(", {:.0f} a second, {:.0f} s left", rate,
                            static_cast<double>(all - done) / rate);
}

Progress::Progress(size_t all, int fd) : all_(all), fd_(isatty(fd) == 1 ? fd : -1) {}

void Progress::update(size_t done) {
  if (fd_ < 0 || Clock::now() < next_) return;
  next_ = Clock::now() + kPause;
  line_ = progress_text(done, all_, std::chrono::duration<double>(Clock::now() - start_).count());
  show();
}

void Progress::hide() {
  if (!line_.empty()) put(fd_, "\r\x1B[K");
}

void Progress::show() {
  if (!line_.empty()) put(fd_, "\r" + line_ + "\x1B[K");
}

}  // namespace qorextctl
