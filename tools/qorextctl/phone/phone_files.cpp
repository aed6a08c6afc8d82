// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/phone/phone_files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

namespace {

namespace fs = std::filesystem;

constexpr uid_t kRadioUser = 1001;
constexpr mode_t kFileMode = 0644;
constexpr mode_t kDeviceMode = 0660;
constexpr off_t kPartitionSize = 0x10000;

constexpr const char* kFolders[] = {"/data/system", kPropertiesFolder, "/proc", "/sys"};

constexpr const char* kBootInfo = "/proc/bootinfo";
constexpr const char* kModemRestarts = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr const char* kRestartReason = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

Error failed(const std::string& path) {
  return transport_error(fmt::format("cannot create {}: {}", path, strerror(errno)));
}

// Parent folders that are created belong to the radio user too.
bool make_folders(const fs::path& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  if (folder.has_parent_path() && folder != folder.parent_path() &&
      !make_folders(folder.parent_path())) {
    return false;
  }
  if (!fs::create_directory(folder, error) && error) {
    errno = error.value();
    return false;
  }
  return give_to_radio_user(folder);
}

// A sparse file of `size` bytes with `content` at an offset.
struct FileContent {
  std::string name;
  mode_t mode;
  View content;
  off_t offset;
  off_t size;
};

std::optional<Error> write_file(const std::string& root, const FileContent& file) {
  std::string path = root + file.name;
  if (!make_folders(fs::path(path).parent_path())) return failed(path);
  UniqueFd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, file.mode));
  bool good = fd.valid() && ftruncate(fd.get(), file.size) == 0 &&
              pwrite(fd.get(), file.content.data(), file.content.size(), file.offset) ==
                  static_cast<ssize_t>(file.content.size()) &&
              give_to_radio_user(path);
  return good ? std::nullopt : std::optional(failed(path));
}

std::optional<Error> write_text(const std::string& root, const char* name,
                                const std::string& text) {
  View content(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  return write_file(root, {name, kFileMode, content, 0, static_cast<off_t>(text.size())});
}

std::string line(const std::string& text) { return text.empty() ? "" : text + "\n"; }

Result<Bytes> block_of(const PhoneFiles& files) {
  if (files.hob_file.empty()) return hob_content(files.hob_seed);
  std::ifstream file(files.hob_file, std::ios::binary);
  Bytes block{std::istreambuf_iterator<char>(file), {}};
  if (block.size() == kHobSize) return block;
  return usage_error(fmt::format("{}: {} bytes, expected {} (a hand-off block)", files.hob_file,
                                 block.size(), kHobSize));
}

std::optional<Error> make_partition(const std::string& root) {
  std::error_code ignored;
  if (fs::exists(root + kHobPartition, ignored)) return std::nullopt;
  return write_file(root, {kHobPartition, kDeviceMode, {}, 0, kPartitionSize});
}

}  // namespace

bool give_to_radio_user(const std::string& path) {
  return geteuid() != 0 || lchown(path.c_str(), kRadioUser, kRadioUser) == 0;
}

std::optional<Error> make_phone_folders(const std::string& root) {
  for (const char* name : kFolders) {
    if (!make_folders(root + name)) return failed(root + name);
  }
  return std::nullopt;
}

std::optional<Error> prepare_phone(const std::string& root, const PhoneFiles& files) {
  auto block = block_of(files);
  if (!block) return block.error();
  constexpr auto kOffset = static_cast<off_t>(kHobOffset);
  FileContent ram{kHobRam, kDeviceMode, *block, kOffset, kOffset + off_t{kHobSize}};

  auto error = make_phone_folders(root);
  if (!error) error = write_text(root, kBootInfo, "POWERUPREASON : " + line(files.power_up_reason));
  if (!error) error = write_text(root, kModemRestarts, line(files.modem_restarts));
  if (!error) error = write_text(root, kRestartReason, line(files.ssr_reason));
  if (!error) error = write_file(root, ram);
  if (!error) error = make_partition(root);
  return error;
}

Bytes hob_content(uint32_t seed) {
  std::minstd_rand random(seed);
  Bytes block(kHobSize);
  for (uint8_t& byte : block) byte = static_cast<uint8_t>(random() >> 8);
  return block;
}

std::optional<std::string> read_property(const std::string& root, const std::string& name) {
  std::ifstream file(root + kPropertiesFolder + "/" + name, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace qorextctl
