#pragma once

#include <sys/types.h>

#include <fstream>
#include <string>

namespace e2e {

// In KiB: the process's share of every mapping but those of shared libraries' files; 0 when the
// kernel does not show it.
inline size_t private_memory(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/smaps");
  bool is_library = false;
  size_t sum = 0;
  for (std::string line; std::getline(file, line);) {
    bool is_mapping = line.find('-') < line.find(' ');
    if (is_mapping) is_library = line.find(".so") != std::string::npos;
    if (!is_library && line.starts_with("Pss:")) sum += std::stoul(line.substr(4));
  }
  return sum;
}

}  // namespace e2e
