// SPDX-License-Identifier: Apache-2.0
// A program on a pseudo-terminal, and the text that the terminal shows.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/qorextctl/base/fd.h"

namespace e2e {

constexpr const char* kTab = "\t";

// The screen of a terminal that shows the bytes written to it: the part of xterm that line editing
// uses.
class Screen {
 public:
  explicit Screen(size_t columns) : columns_(columns) {}

  void write(std::string_view bytes);

  // All rows from the top, without trailing blanks. The screen has no bottom and never scrolls.
  std::vector<std::string> rows() const;
  std::string row_of_cursor() const;
  size_t column() const { return column_; }

 private:
  using Character = std::string;  // UTF-8

  std::vector<Character>& row();
  void put(Character character);
  void control(char byte);
  void sequence(char final);
  void erase_row_from(size_t column);
  void move(size_t count, char direction);

  size_t columns_;
  std::vector<std::vector<Character>> rows_;
  size_t row_ = 0;
  size_t column_ = 0;
  std::string escape_;    // an incomplete sequence
  Character unfinished_;  // an incomplete character
};

class Terminal {
 public:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  static constexpr size_t kColumns = 80;

  Terminal(const std::vector<std::string>& arguments, const Environment& environment);
  // Hangs up, as closing a terminal's window does.
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys);

  // Waits until the condition holds or the program ends, and expects the condition to hold.
  void wait_for(const std::string& what, const std::function<bool(const Screen&)>& holds);
  void wait_for_row(const std::string& text);     // a row contains the text
  void wait_for_cursor(const std::string& text);  // the cursor's row equals the text

  const Screen& screen() const { return screen_; }
  std::string text() const;

  // Waits for the program's end. Returns -1 after a signal or a timeout.
  int exit_status();

 private:
  bool read_more(int timeout_ms);

  qorextctl::UniqueFd terminal_;
  pid_t pid_ = -1;
  Screen screen_{kColumns};
};

}  // namespace e2e
