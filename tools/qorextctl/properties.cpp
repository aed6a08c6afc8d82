#include "properties.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace qorextctl {

std::optional<std::string> read_property(const std::string& phone_root, const std::string& name) {
  std::ifstream file(phone_root + "/dev/__properties__/" + name, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::optional<std::string> wait_for_property(const std::string& phone_root, const std::string& name,
                                             const std::string& value, Deadline deadline) {
  constexpr std::chrono::milliseconds kPause{5};
  auto current = read_property(phone_root, name);
  while (current != value && !deadline.passed()) {
    std::this_thread::sleep_for(kPause);
    current = read_property(phone_root, name);
  }
  return current;
}

}  // namespace qorextctl
