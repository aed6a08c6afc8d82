// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/history_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/qorextctl/base/private_file.h"
#include "tools/qorextctl/daemon/channel.h"

namespace qorextctl {

namespace {

namespace fs = std::filesystem;

View bytes_of(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

bool write_private(const std::string& path, int flags, const std::string& text) {
  UniqueFd file = open_private(path, flags);
  return file.valid() && write_whole(file.get(), bytes_of(text));
}

}  // namespace

std::string history_path() {
  const char* state = getenv("XDG_STATE_HOME");
  const char* home = getenv("HOME");
  constexpr const char* kName = "/qorextctl/history";
  if (state && *state == '/') return std::string(state) + kName;
  return home && *home == '/' ? std::string(home) + "/.local/state" + kName : "";
}

Error HistoryFile::failed() const {
  return {Outcome::broken, fmt::format("no history is kept: {}: {}", path_, strerror(errno))};
}

Result<std::vector<std::string>> HistoryFile::load() {
  std::vector<std::string> lines;
  std::ifstream file(path_);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  if (lines.size() <= kMaxHistoryLines) return lines;
  lines.erase(lines.begin(), lines.end() - ptrdiff_t{kMaxHistoryLines});
  if (auto error = replace(lines)) return *error;
  return lines;
}

std::optional<Error> HistoryFile::replace(const std::vector<std::string>& lines) {
  std::string made = fmt::format("{}.{}", path_, getpid());
  bool good = write_private(made, O_TRUNC, fmt::format("{}\n", fmt::join(lines, "\n"))) &&
              rename(made.c_str(), path_.c_str()) == 0;
  if (good) return std::nullopt;
  Error error = failed();
  unlink(made.c_str());
  return error;
}

std::optional<Error> HistoryFile::add(const std::string& line) {
  if (path_.empty()) return std::nullopt;
  std::error_code ignored;  // opening the file tells
  fs::create_directories(fs::path(path_).parent_path(), ignored);
  if (write_private(path_, O_APPEND, line + "\n")) return std::nullopt;
  return failed();
}

}  // namespace qorextctl
