// SPDX-License-Identifier: Apache-2.0
// A folder of its own for each run, in memory where the machine has such a file system.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

class Scratch {
 public:
  Scratch() {
    const std::filesystem::path memory = "/dev/shm";
    auto parent = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = parent / "qorext-fuzz-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) abort();
    root_ = name;
  }
  ~Scratch() { std::filesystem::remove_all(root_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::filesystem::path& root() const { return root_; }

 private:
  std::filesystem::path root_;
};

}  // namespace fuzz
