// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/terminal.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

#include "tests/e2e/support/wait.h"

namespace e2e {

namespace {

constexpr char kEscape = '\x1B';
constexpr int kPollMs = 50;

// The size of the UTF-8 character that starts with this byte.
size_t length_of(char first) {
  auto byte = static_cast<unsigned char>(first);
  if (byte < 0xC0) return 1;
  return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

std::string text_of(const std::vector<std::string>& row) {
  std::string text;
  for (const std::string& character : row) text += character;
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

void Screen::write(std::string_view bytes) {
  for (char byte : bytes) {
    if (!escape_.empty()) {
      escape_ += byte;
      bool is_final = escape_.size() > 2 && byte >= '@' && byte <= '~';
      bool is_short = escape_.size() == 2 && byte != '[';
      if (is_final) sequence(byte);
      if (is_final || is_short) escape_.clear();
    } else if (byte == kEscape) {
      escape_ = byte;
    } else if (static_cast<unsigned char>(byte) < ' ') {
      control(byte);
    } else {
      unfinished_ += byte;
      if (unfinished_.size() == length_of(unfinished_[0])) put(std::exchange(unfinished_, ""));
    }
  }
}

std::vector<std::string> Screen::rows() const {
  std::vector<std::string> texts;
  for (const auto& row : rows_) texts.push_back(text_of(row));
  return texts;
}

std::string Screen::row_of_cursor() const {
  return row_ < rows_.size() ? text_of(rows_[row_]) : "";
}

std::vector<Screen::Character>& Screen::row() {
  if (rows_.size() <= row_) rows_.resize(row_ + 1);
  return rows_[row_];
}

// The cursor leaves a full row only with the next character.
void Screen::put(Character character) {
  if (column_ == columns_) {
    column_ = 0;
    ++row_;
  }
  if (row().size() <= column_) row().resize(column_ + 1, " ");
  row()[column_++] = std::move(character);
}

void Screen::control(char byte) {
  if (byte == '\r') column_ = 0;
  if (byte == '\n') ++row_;
  if (byte == '\b' && column_ > 0) --column_;
}

void Screen::move(size_t count, char direction) {
  if (direction == 'A') row_ -= std::min(row_, count);
  if (direction == 'B') row_ += count;
  if (direction == 'C') column_ = std::min(columns_ - 1, column_ + count);
  if (direction == 'D') column_ -= std::min(column_, count);
  if (direction == 'G') column_ = count - 1;
}

void Screen::erase_row_from(size_t column) { row().resize(std::min(row().size(), column)); }

void Screen::sequence(char final) {
  auto number = static_cast<size_t>(strtoul(escape_.c_str() + 2, nullptr, 10));
  size_t count = std::max<size_t>(1, number);
  if (final >= 'A' && final <= 'G') move(count, final);
  if (final == 'K' || final == 'J') erase_row_from(column_);
  if (final == 'J') rows_.resize(row_ + 1);
  row().resize(std::max(row().size(), column_), " ");
  auto place = row().begin() + static_cast<ptrdiff_t>(column_);
  if (final == 'P')
    row().erase(place, place + static_cast<ptrdiff_t>(std::min(count, row().size() - column_)));
  if (final == '@') row().insert(place, count, " ");
}

Terminal::Terminal(const std::vector<std::string>& arguments, const Environment& environment) {
  std::vector<std::string> words = arguments;
  std::vector<std::string> settings = {"TERM=xterm", "LC_ALL=C.UTF-8"};
  for (const auto& [name, value] : environment) settings.push_back(name + "=" + value);
  std::vector<char*> argv = pointers_to(words);
  std::vector<char*> envp = pointers_to(settings);
  winsize size{24, kColumns, 0, 0};
  int terminal = -1;
  pid_ = forkpty(&terminal, nullptr, nullptr, &size);
  if (pid_ < 0) throw std::runtime_error("cannot open a pseudo-terminal");
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

// Returns false if no output came within the timeout, or the program has closed the terminal.
bool Terminal::read_more(int timeout_ms) {
  pollfd entry{terminal_.get(), POLLIN, 0};
  if (poll(&entry, 1, timeout_ms) <= 0) return false;
  char buffer[4096];
  ssize_t size = read(terminal_.get(), buffer, sizeof buffer);
  if (size <= 0) return false;
  screen_.write({buffer, static_cast<size_t>(size)});
  return true;
}

void Terminal::wait_for(const std::string& what, const std::function<bool(const Screen&)>& holds) {
  auto deadline = time_limit();
  while (!holds(screen_) && !deadline.passed()) read_more(kPollMs);
  EXPECT_TRUE(holds(screen_)) << "not on the screen: " << what << "\n" << text();
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
  auto deadline = time_limit();
  int status = 0;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (deadline.passed()) {
      ADD_FAILURE() << "still runs:\n" << text();
      return -1;
    }
    read_more(kPollMs);
  }
  pid_ = -1;
  while (read_more(0)) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace e2e
