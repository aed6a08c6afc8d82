// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/base/text.h"

#include <algorithm>
#include <numeric>
#include <streambuf>

namespace qorextctl {

namespace {

constexpr int kEnd = std::char_traits<char>::eof();
constexpr size_t kMaxMistakes = 2;

// The number of characters to insert, delete or replace (Levenshtein distance).
size_t distance(const std::string& from, const std::string& to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= from.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 1; j <= to.size(); ++j) {
      size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row.back();
}

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

std::optional<std::vector<std::string>> split_line(const std::string& line) {
  std::vector<std::string> words;
  std::string word;
  char quote = 0;
  bool begun = false;
  for (char character : line) {
    bool blank = character == ' ' || character == '\t' || character == '\r';
    if (quote == 0 && blank) {
      if (begun) words.push_back(word);
      word.clear();
      begun = false;
      continue;
    }
    if (quote == 0 && !begun && character == '#') break;
    begun = true;
    if (character == quote) {
      quote = 0;
    } else if (quote == 0 && (character == '"' || character == '\'')) {
      quote = character;
    } else {
      word += character;
    }
  }
  if (quote != 0) return std::nullopt;
  if (begun) words.push_back(word);
  return words;
}

std::string nearest(const std::string& name, const std::vector<std::string>& names) {
  std::string best;
  size_t fewest = kMaxMistakes + 1;
  for (const std::string& candidate : names) {
    auto [shorter, longer] = std::minmax({name.size(), candidate.size()});
    if (longer - shorter >= fewest) continue;  // the distance is at least this
    size_t mistakes = distance(name, candidate);
    if (mistakes >= fewest) continue;
    best = candidate;
    fewest = mistakes;
  }
  return best;
}

std::string argument_name(std::string name) {
  std::replace(name.begin(), name.end(), '_', '-');
  return name;
}

std::string json_key(std::string name) {
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

}  // namespace qorextctl
