// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/log_capture.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace qorextctl {

namespace {

constexpr size_t kMaxRead = 65536;

// The log library cuts its lines after some kilobytes. A longer line is dropped completely: a part
// without the line's head would not be masked.
constexpr size_t kMaxLine = 65536;
constexpr const char* kLongLine = "(a line of more than 65536 bytes)";
static_assert(kMaxLine == 65536, "kLongLine contains the number");

using std::chrono::nanoseconds;

nanoseconds monotonic_now() { return Deadline::Clock::now().time_since_epoch(); }

// The real-time clock minus the monotonic clock. Uses the reading that took the shortest time,
// because the thread may be preempted between the clocks.
nanoseconds clock_offset() {
  constexpr int kReadings = 5;
  nanoseconds offset{};
  nanoseconds shortest = nanoseconds::max();
  for (int i = 0; i < kReadings; ++i) {
    nanoseconds before = monotonic_now();
    nanoseconds real = std::chrono::system_clock::now().time_since_epoch();
    nanoseconds taken = monotonic_now() - before;
    if (taken >= shortest) continue;
    shortest = taken;
    offset = real - before - taken / 2;
  }
  return offset;
}

// The kernel's timestamps are of the real-time clock.
int64_t monotonic_time(const msghdr& message) {
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  bool is_stamp =
      header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_TIMESTAMPNS;
  if (!is_stamp) return monotonic_now().count();
  timespec stamp{};
  memcpy(&stamp, CMSG_DATA(header), sizeof stamp);
  nanoseconds written = std::chrono::seconds(stamp.tv_sec) + nanoseconds(stamp.tv_nsec);
  return (written - clock_offset()).count();
}

}  // namespace

LogCapture::~LogCapture() {
  if (reader_.joinable()) reader_.join();
}

void LogCapture::start(UniqueFd input, TimedListener listener) {
  timed_listener_ = std::move(listener);
  ended_ = false;
  reader_ = std::thread([this, fd = std::move(input)] { read_all(fd); });
}

LogCapture::Chunk LogCapture::read_some(const UniqueFd& input, std::span<char> buffer) const {
  if (!timed_listener_) return {read(input.get(), buffer.data(), buffer.size()), 0};
  iovec content{buffer.data(), buffer.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
  msghdr message{};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t size = recvmsg(input.get(), &message, 0);
  return {size, size > 0 ? monotonic_time(message) : 0};
}

void LogCapture::read_all(const UniqueFd& input) {
  std::string rest;
  bool is_in_long_line = false;
  std::vector<char> buffer(kMaxRead);
  Chunk chunk{};
  for (;;) {
    chunk = read_some(input, buffer);
    if (chunk.size < 0 && errno == EINTR) continue;
    if (chunk.size <= 0) break;
    rest.append(buffer.data(), static_cast<size_t>(chunk.size));
    for (size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
      if (!is_in_long_line) add(rest.substr(0, end), chunk.time);
      is_in_long_line = false;
      rest.erase(0, end + 1);
    }
    if (rest.size() <= kMaxLine) continue;
    if (!is_in_long_line) add(kLongLine, chunk.time);
    is_in_long_line = true;
    rest.clear();
  }
  if (!rest.empty() && !is_in_long_line) add(rest, chunk.time);
  std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

void LogCapture::add(const std::string& line, int64_t time) {
  if (listener_) listener_(line);
  if (timed_listener_) timed_listener_(line, time);
  std::lock_guard lock(mutex_);
  lines_.push_back(line);
  if (lines_.size() > max_lines_) lines_.pop_front();
  changed_.notify_all();
}

std::vector<std::string> LogCapture::lines() const {
  std::lock_guard lock(mutex_);
  return {lines_.begin(), lines_.end()};
}

bool LogCapture::wait_for(const std::string& text, Deadline deadline) const {
  return find(text, 0, deadline).has_value();
}

std::optional<size_t> LogCapture::find(const std::string& text, size_t first,
                                       Deadline deadline) const {
  std::unique_lock lock(mutex_);
  auto holds_text = [this, &text, &first] {
    while (first < lines_.size() && lines_[first].find(text) == std::string::npos) ++first;
    return first < lines_.size();
  };
  changed_.wait_until(lock, deadline.time(), [&] { return holds_text() || ended_; });
  return holds_text() ? std::optional(first) : std::nullopt;
}

bool LogCapture::wait_end(Deadline deadline) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline.time(), [this] { return ended_; });
}

}  // namespace qorextctl
