// SPDX-License-Identifier: Apache-2.0
// Lines of text input, the words of a line, and names as people type them.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace qorextctl {

// The log library cuts its lines after some kilobytes; a recorded message has some hundred
// kilobytes.
constexpr size_t kMaxLineBytes = size_t{1} << 20;

class LineReader {
 public:
  enum class Line { whole, too_long, none };

  // `input` must outlive the reader.
  explicit LineReader(std::istream& input) : input_(input) {}

  // Reads the next line without its end. Returns `too_long` as soon as a line exceeds
  // kMaxLineBytes, and nothing of it; the next call continues after its end.
  Line next(std::string& line);

 private:
  void skip_line();

  std::istream& input_;
  bool is_in_long_line_ = false;
};

// Reads the whole input. Returns false if it is longer than kMaxLineBytes.
bool read_whole(std::istream& input, std::string& text);

// Splits a line at blanks outside quotes; a word that begins with # starts a comment. Returns
// nothing if a quote is not closed.
std::optional<std::vector<std::string>> split_line(const std::string& line);

// Returns the most similar name with at most two typing mistakes, or an empty string.
std::string nearest(const std::string& name, const std::vector<std::string>& names);

// "rde_id" becomes "rde-id", and the reverse for JSON keys.
std::string argument_name(std::string name);
std::string json_key(std::string name);

}  // namespace qorextctl
