// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/files.h"

#include <fstream>
#include <sstream>

namespace e2e {

std::string content_of(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return std::move(content).str();
}

}  // namespace e2e
