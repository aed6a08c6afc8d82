// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/phone/properties.h"

#include <fstream>
#include <iterator>

namespace qorextctl {

std::optional<std::string> read_property(const std::string& phone_root, const std::string& name) {
  std::ifstream file(phone_root + "/dev/__properties__/" + name, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace qorextctl
