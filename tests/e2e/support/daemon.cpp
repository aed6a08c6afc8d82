// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/daemon.h"

#include "tests/e2e/support/value_or_throw.h"
#include "tests/e2e/support/wire.h"
#include "tools/qorextctl/log/log_line.h"

namespace e2e {

namespace {

constexpr char kError = 'E';

}  // namespace

std::unique_ptr<qorextctl::Daemon> start_daemon(const PhoneRoot& phone,
                                                qorextctl::DaemonOptions options) {
  options.executable = phone.program("qorext_client");
  if (options.modem.empty()) options.modem = phone.modem();
  options.phone_root = phone.daemon_root();
  return value_or_throw(qorextctl::Daemon::start(options));
}

std::string next_message(qorextctl::Daemon& daemon) {
  auto frame = daemon.receive_unsolicited(time_limit());
  return frame ? as_hex(*frame) : "nothing";
}

std::string next_reply(qorextctl::Daemon& daemon) {
  auto frame = daemon.receive_reply(qorextctl::ReplyForm::cdma, time_limit());
  return frame ? as_hex(*frame) : "nothing";
}

std::string exit_status_of(qorextctl::Daemon& daemon) {
  auto status = daemon.wait_exit(time_limit());
  return status ? describe(*status) : "still running";
}

void DaemonLog::add(const std::string& line) {
  auto parsed = qorextctl::parse_daemon_line(line);
  std::lock_guard lock(mutex_);
  if (parsed && parsed->priority == kError) {
    messages_.emplace_back(parsed->text);
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

size_t DaemonLog::size() const {
  std::lock_guard lock(mutex_);
  return messages_.size();
}

std::optional<size_t> DaemonLog::find(const std::string& text, size_t first) const {
  for (size_t i = first; i < messages_.size(); ++i) {
    if (messages_[i] == text) return i;
  }
  return std::nullopt;
}

std::optional<size_t> DaemonLog::wait_for(const std::string& text, size_t first,
                                          Deadline deadline) const {
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
