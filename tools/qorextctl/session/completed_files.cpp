// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/completed_files.h"

#include <filesystem>

namespace qorextctl {

std::vector<completion::Candidate> files_beginning_with(const std::string& front,
                                                        const std::string& begun) {
  namespace fs = std::filesystem;
  std::string folder = begun.substr(0, begun.find_last_of('/') + 1);
  std::error_code error;
  std::vector<completion::Candidate> names;
  for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
    std::string name = front + folder;
    name += entry.path().filename().string();
    if (entry.is_directory(error)) name += '/';
    names.push_back({name});
  }
  return names;
}

}  // namespace qorextctl
