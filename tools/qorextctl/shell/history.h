// SPDX-License-Identifier: Apache-2.0
// The lines of earlier runs, one a line in a file that nobody else may read.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"

namespace qorextctl {

constexpr size_t kMaxHistoryLines = 1000;

// $XDG_STATE_HOME/qorextctl/history, or the same below ~/.local/state; empty without a home.
std::string history_path();

class HistoryFile {
 public:
  // Makes the folder; an empty path keeps nothing.
  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  // The last kMaxHistoryLines lines, the oldest one first. What is older leaves the file.
  Result<std::vector<std::string>> load();

  // Puts a line at the file's end, also when other runs do so at the same time.
  std::optional<Error> add(const std::string& line);

 private:
  Error failed() const;
  std::optional<Error> replace(const std::vector<std::string>& lines);

  std::string path_;
};

// Returns whether a session's line holds personal data, which personal.h would mask, or may hold
// some. Such a line must not be stored.
bool is_private_line(const std::string& line);

}  // namespace qorextctl
