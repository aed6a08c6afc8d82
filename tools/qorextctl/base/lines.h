// SPDX-License-Identifier: Apache-2.0
// Lines of text from outside.
#pragma once

#include <cstddef>
#include <istream>
#include <string>

namespace qorextctl {

// The log library cuts its lines after some kilobytes, a recorded message with its fields takes
// some hundred. What is longer is no line of these.
constexpr size_t kMaxLineBytes = size_t{1} << 20;

class LineReader {
 public:
  enum class Line { whole, too_long, none };

  // `input` must outlive the reader.
  explicit LineReader(std::istream& input) : input_(input) {}

  // Takes the next line, without its end. Of one above kMaxLineBytes it keeps nothing: it returns
  // `too_long` as soon as that is known, and the next call begins after the line's end.
  Line next(std::string& line);

 private:
  void skip_line();

  std::istream& input_;
  bool is_in_long_line_ = false;
};

// The whole input; false when it is longer than kMaxLineBytes.
bool read_whole(std::istream& input, std::string& text);

}  // namespace qorextctl
