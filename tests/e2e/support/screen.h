// SPDX-License-Identifier: Apache-2.0
// What a terminal shows of the bytes written to it: as much of xterm as line editing uses.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace e2e {

class Screen {
 public:
  explicit Screen(size_t columns) : columns_(columns) {}

  void write(std::string_view bytes);

  // From the top, without blanks at the end. There is no bottom: nothing scrolls away.
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
  std::string escape_;    // a sequence that is not whole
  Character unfinished_;  // a character that is not whole
};

}  // namespace e2e
