#include "log_capture.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace qorextctl {

LogCapture::~LogCapture() {
  if (reader_.joinable()) reader_.join();
}

void LogCapture::start(UniqueFd input) {
  ended_ = false;
  reader_ = std::thread([this, fd = std::move(input)] { read_all(fd); });
}

void LogCapture::read_all(const UniqueFd& input) {
  std::string rest;
  char buffer[4096];
  for (;;) {
    ssize_t size = read(input.get(), buffer, sizeof buffer);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
    rest.append(buffer, static_cast<size_t>(size));
    for (size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
      add(rest.substr(0, end));
      rest.erase(0, end + 1);
    }
  }
  if (!rest.empty()) add(rest);
  std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

void LogCapture::add(const std::string& line) {
  if (listener_) listener_(line);
  std::lock_guard lock(mutex_);
  lines_.push_back(line);
  if (lines_.size() > most_lines_) lines_.pop_front();
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
