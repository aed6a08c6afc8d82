// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/screen.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace e2e {

namespace {

constexpr char kEscape = '\x1B';

// Bytes of the UTF-8 character that begins so.
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

// A full row is left with the next character only.
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

}  // namespace e2e
