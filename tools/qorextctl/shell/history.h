// SPDX-License-Identifier: Apache-2.0
// The lines of earlier runs, in a file with mode 0600.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"

namespace qorextctl {

constexpr size_t kMaxHistoryLines = 1000;

// Returns $XDG_STATE_HOME/qorextctl/history, or the same in ~/.local/state; empty without HOME.
std::string history_path();

class HistoryFile {
 public:
  // An empty path stores nothing.
  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  // Returns the last kMaxHistoryLines lines, oldest first, and removes older ones from the file.
  Result<std::vector<std::string>> load();

  // Appends a line and creates the folder if needed. Several runs may append at the same time.
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
