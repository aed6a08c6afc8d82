// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/terminal.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/e2e/support/patience.h"
#include "tools/qorextctl/base/deadline.h"

namespace e2e {

namespace {

constexpr int kGlanceMs = 50;

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Terminal::Terminal(const std::vector<std::string>& arguments, const Environment& environment) {
  std::vector<std::string> words = arguments;
  std::vector<std::string> settings = {"TERM=xterm", "LC_ALL=C.UTF-8"};
  for (const auto& [name, value] : environment) settings.push_back(name + "=" + value);
  std::vector<char*> argv = pointers_to(words);
  std::vector<char*> envp = pointers_to(settings);
  winsize size{24, kColumns, 0, 0};
  int terminal = -1;
  pid_ = forkpty(&terminal, nullptr, nullptr, &size);
  if (pid_ < 0) throw std::runtime_error("no terminal");
  if (pid_ == 0) {
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  terminal_ = qorextctl::UniqueFd(terminal);
}

Terminal::~Terminal() {
  terminal_.reset();
  if (pid_ > 0) waitpid(pid_, nullptr, 0);
}

void Terminal::type(const std::string& keys) {
  ASSERT_EQ(write(terminal_.get(), keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

// False when there is nothing more for now, or for ever.
bool Terminal::read_more(int timeout_ms) {
  pollfd entry{terminal_.get(), POLLIN, 0};
  if (poll(&entry, 1, timeout_ms) <= 0) return false;
  char buffer[4096];
  ssize_t size = read(terminal_.get(), buffer, sizeof buffer);
  if (size <= 0) return false;
  screen_.write({buffer, static_cast<size_t>(size)});
  return true;
}

void Terminal::wait_for(const std::string& what, const std::function<bool(const Screen&)>& is_so) {
  auto deadline = qorextctl::Deadline::in(kPatience);
  while (!is_so(screen_) && !deadline.passed()) read_more(kGlanceMs);
  EXPECT_TRUE(is_so(screen_)) << "not on the screen: " << what << "\n" << text();
}

void Terminal::wait_for_row(const std::string& text) {
  wait_for(text, [&](const Screen& screen) {
    for (const std::string& row : screen.rows()) {
      if (row.find(text) != std::string::npos) return true;
    }
    return false;
  });
}

void Terminal::wait_for_cursor(const std::string& text) {
  wait_for(text, [&](const Screen& screen) { return screen.row_of_cursor() == text; });
}

std::string Terminal::text() const {
  std::string text;
  for (const std::string& row : screen_.rows()) text += row + "\n";
  return text;
}

int Terminal::exit_status() {
  auto deadline = qorextctl::Deadline::in(kPatience);
  int status = 0;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (deadline.passed()) {
      ADD_FAILURE() << "still runs:\n" << text();
      return -1;
    }
    read_more(kGlanceMs);
  }
  pid_ = -1;
  while (read_more(0)) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace e2e
