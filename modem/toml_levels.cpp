// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "modem/scenario.h"

namespace modem {
namespace {

constexpr size_t kFence = 3;  // quotes around a multi-line string

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  size_t find() {
    while (at_ < text_.size()) {
      step(text_[at_]);
      if (level_ + key_ + dots_ > kMaxTomlLevels) return line();
      ++at_;
    }
    return 0;
  }

 private:
  void step(char character) {
    bool was_start = is_line_start_;
    is_line_start_ = character == '\n' || (was_start && (character == ' ' || character == '\t'));
    switch (character) {
      case '"':
      case '\'':
        return skip_text(character);
      case '#':
        at_ = std::min(text_.find('\n', at_), text_.size()) - 1;
        return;
      case '.':
        ++dots_;
        return;
      case '=':
        key_ = std::exchange(dots_, 0);
        return;
      case '[':
      case '{':
        return open(was_start && open_.empty());
      case ']':
      case '}':
        return close();
      case ',':
      case '\n':
        key_ = dots_ = 0;
        return;
      default:
        return;
    }
  }

  void open(bool is_header) {
    if (is_header) {
      in_header_ = true;
      level_ = 0;
    }
    open_.push_back(level_);
    level_ += key_ + 1;
    key_ = dots_ = 0;
  }

  // The lines after a header belong to its table.
  void close() {
    if (in_header_) {
      level_ += dots_;
      in_header_ = false;
      open_.clear();
    } else if (!open_.empty()) {
      level_ = open_.back();
      open_.pop_back();
    }
    key_ = dots_ = 0;
  }

  // Stops at the last closing quote. A single-line string ends at the end of the line.
  void skip_text(char quote) {
    std::string fence(kFence, quote);
    bool is_long = text_.substr(at_, kFence) == fence;
    std::string_view end = is_long ? std::string_view(fence) : std::string_view(fence).substr(0, 1);
    at_ += end.size();
    while (at_ < text_.size() && text_.substr(at_, end.size()) != end) {
      if (!is_long && text_[at_] == '\n') return;
      at_ += quote == '"' && text_[at_] == '\\' ? 2 : 1;
    }
    at_ += end.size() - 1;
    // A multi-line string may end with quotes of its own.
    while (is_long && at_ + 1 < text_.size() && text_[at_ + 1] == quote) ++at_;
  }

  size_t line() const {
    auto end = text_.begin() + static_cast<ptrdiff_t>(std::min(at_, text_.size()));
    return 1 + static_cast<size_t>(std::count(text_.begin(), end, '\n'));
  }

  std::string_view text_;
  size_t at_ = 0;
  size_t level_ = 0;          // of the table or list that is open
  size_t key_ = 0;            // dots of the key before the value
  size_t dots_ = 0;           // dots since the last separator
  std::vector<size_t> open_;  // the level before each open bracket
  bool in_header_ = false;
  bool is_line_start_ = true;
};

}  // namespace

size_t find_excess_levels(std::string_view toml) { return Scanner(toml).find(); }

}  // namespace modem
