// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/line_words.h"

namespace qorextctl {

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

}  // namespace qorextctl
