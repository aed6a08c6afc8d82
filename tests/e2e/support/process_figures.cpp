// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/process_figures.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace e2e {

namespace {

namespace fs = std::filesystem;

std::string path_of(pid_t pid, const std::string& name) {
  return "/proc/" + std::to_string(pid) + "/" + name;
}

size_t entries_of(const std::string& path) {
  return static_cast<size_t>(std::distance(fs::directory_iterator(path), {}));
}

// The number in the line that begins with the name.
size_t number_in(const std::string& path, const std::string& name) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name + ":")) return std::stoul(line.substr(name.size() + 1));
  }
  throw std::runtime_error("no " + name + " in " + path);
}

}  // namespace

ProcessFigures figures_of(pid_t pid) {
  std::string memory = path_of(pid, "smaps_rollup");
  return {number_in(memory, "Rss"), number_in(memory, "Anonymous"), entries_of(path_of(pid, "fd")),
          entries_of(path_of(pid, "task"))};
}

std::multiset<std::string> descriptors_of(pid_t pid) {
  std::multiset<std::string> kinds;
  for (const auto& entry : fs::directory_iterator(path_of(pid, "fd"))) {
    std::string target = fs::read_symlink(entry.path());
    bool is_numbered = target.starts_with("pipe:") || target.starts_with("socket:");
    kinds.insert(is_numbered ? target.substr(0, target.find(':')) : target);
  }
  return kinds;
}

size_t lowest_free_descriptor(pid_t pid) {
  size_t number = 0;
  while (fs::exists(fs::symlink_status(path_of(pid, "fd/" + std::to_string(number))))) ++number;
  return number;
}

size_t private_memory_of(pid_t pid) {
  std::ifstream file(path_of(pid, "smaps"));
  bool is_library = false;
  size_t sum = 0;
  for (std::string line; std::getline(file, line);) {
    bool is_mapping = line.find('-') < line.find(' ');
    if (is_mapping) is_library = line.find(".so") != std::string::npos;
    if (!is_library && line.starts_with("Pss:")) sum += std::stoul(line.substr(4));
  }
  return sum;
}

uint64_t processor_time_of(pid_t pid) {
  std::ifstream file(path_of(pid, "stat"));
  std::string text{std::istreambuf_iterator<char>(file), {}};
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  std::string skipped;
  for (int i = 0; i < 11; ++i) fields >> skipped;
  uint64_t user = 0;
  uint64_t system = 0;
  fields >> user >> system;
  return user + system;
}

}  // namespace e2e
