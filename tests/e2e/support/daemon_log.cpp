#include "daemon_log.h"

#include <regex>

namespace e2e {

namespace {

// What the log library puts in front of an error's text: today's form, or that of older releases.
const std::regex kErrorForms[] = {
    std::regex(R"(RIL-QOREXT E [0-9-]+ [0-9:]+ +\d+ +\d+ )"),
    std::regex(R"(E/RIL-QOREXT\( *\d+\): )"),
};

std::optional<std::string> text_of(const std::string& line) {
  for (const std::regex& form : kErrorForms) {
    std::smatch match;
    bool found = std::regex_search(line, match, form, std::regex_constants::match_continuous);
    if (found) return match.suffix().str();
  }
  return std::nullopt;
}

}  // namespace

void DaemonLog::add(const std::string& line) {
  auto text = text_of(line);
  std::lock_guard lock(mutex_);
  if (text) {
    messages_.push_back(*text);
  } else if (!line.empty()) {
    other_lines_.push_back(line);
  }
  changed_.notify_all();
}

std::vector<std::string> DaemonLog::texts(size_t first, size_t end) const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> texts;
  for (size_t i = first; i < end && i < messages_.size(); ++i) texts.push_back(messages_[i]);
  return texts;
}

std::optional<size_t> DaemonLog::find(const std::string& text, size_t first) const {
  for (size_t i = first; i < messages_.size(); ++i) {
    if (messages_[i] == text) return i;
  }
  return std::nullopt;
}

std::optional<size_t> DaemonLog::wait_for(const std::string& text, size_t first,
                                          qorextctl::Deadline deadline) const {
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, deadline.time(), [&] { return find(text, first).has_value(); });
  return find(text, first);
}

std::vector<std::string> DaemonLog::other_lines() const {
  std::lock_guard lock(mutex_);
  return other_lines_;
}

std::string DaemonLog::describe() const {
  std::lock_guard lock(mutex_);
  std::string text;
  for (const std::string& message : messages_) text += "  " + message + "\n";
  for (const std::string& line : other_lines_) text += "  " + line + "\n";
  return text;
}

}  // namespace e2e
