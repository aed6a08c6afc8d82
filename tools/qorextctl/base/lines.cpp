// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/lines.h"

#include <streambuf>

namespace qorextctl {

namespace {

constexpr int kEnd = std::char_traits<char>::eof();

}  // namespace

LineReader::Line LineReader::next(std::string& line) {
  if (is_in_long_line_) skip_line();
  line.clear();
  std::streambuf& bytes = *input_.rdbuf();
  for (int byte = bytes.sbumpc(); byte != kEnd; byte = bytes.sbumpc()) {
    if (byte == '\n') return Line::whole;
    if (line.size() == kMaxLineBytes) {
      line.clear();
      is_in_long_line_ = true;
      return Line::too_long;
    }
    line += static_cast<char>(byte);
  }
  return line.empty() ? Line::none : Line::whole;
}

void LineReader::skip_line() {
  std::streambuf& bytes = *input_.rdbuf();
  int byte = 0;
  while (byte != '\n' && byte != kEnd) byte = bytes.sbumpc();
  is_in_long_line_ = false;
}

bool read_whole(std::istream& input, std::string& text) {
  text.resize(kMaxLineBytes + 1);
  input.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(input.gcount()));
  return text.size() <= kMaxLineBytes;
}

}  // namespace qorextctl
