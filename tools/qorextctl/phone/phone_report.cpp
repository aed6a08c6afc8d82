// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/phone/phone_report.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tools/qorextctl/phone/phone_files.h"

namespace qorextctl {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 07777;
constexpr const char* kCurrentLink = "/data/vorn/.0001";
constexpr const char* kPreviousLink = "/data/vorn/.0002";

// The sorted names in a folder; empty if there is no such folder.
std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Bytes read_file(const std::string& path, uint64_t offset = 0, size_t max_size = kHobSize) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset));
  Bytes bytes(max_size);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(max_size));
  bytes.resize(static_cast<size_t>(file.gcount()));
  return bytes;
}

std::string text_of(const std::string& path) {
  Bytes bytes = read_file(path);
  return {bytes.begin(), bytes.end()};
}

// The target of a link, a path of the phone; empty if there is no such link.
std::string target_of(const std::string& path) {
  std::error_code ignored;
  return fs::read_symlink(path, ignored).string();
}

std::string time_text(time_t time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(time));
}

std::string use_of(const std::string& root, const std::string& path) {
  if (path == target_of(root + kCurrentLink)) return "current";
  if (path == target_of(root + kPreviousLink)) return "previous";
  return fs::path(path).filename().string().front() == '~' ? "temporary" : "unlinked";
}

Items file_record(const std::string& root, const std::string& path) {
  struct stat status {};
  lstat((root + path).c_str(), &status);
  return {{"name", fs::path(path).filename().string(), {}},
          {"use", use_of(root, path), {}},
          {"size", status.st_size, {}},
          {"mode", fmt::format("{:04o}", status.st_mode & kPermissions), {}},
          {"owner", status.st_uid, {}},
          {"group", status.st_gid, {}},
          {"changed", time_text(status.st_mtime), {}}};
}

Items link_record(const std::string& root, const std::string& path) {
  std::string target = target_of(root + path);
  std::error_code ignored;
  return {{"name", fs::path(path).filename().string(), {}},
          {"target", target, {}},
          {"resolves", fs::exists(root + target, ignored) ? "yes" : "no", {}}};
}

// The name has the form "TAG@MILLISECONDS.txt".
Items dropbox_record(const std::string& root, const std::string& name) {
  size_t at = name.find('@');
  time_t seconds = at == std::string::npos ? 0 : strtoll(name.c_str() + at + 1, nullptr, 10) / 1000;
  return {{"tag", name.substr(0, at), {}},
          {"time", time_text(seconds), {}},
          {"text", text_of(root + kDropBoxFolder + "/" + name), {}}};
}

Item group(const char* name) { return {name, {}, {}, true}; }

std::string hob_text(const std::string& root) {
  Bytes ram = read_file(root + kHobRam, kHobOffset);
  Bytes partition = read_file(root + kHobPartition);
  if (ram.size() != kHobSize) return "no block in the RAM";
  if (partition.size() != kHobSize) return "no partition";
  return partition == ram ? "saved" : "not saved";
}

}  // namespace

Items phone_report(const std::string& root) {
  Item links = group("links");
  Item logs = group("logs");
  for (const std::string& name : names_in(root + kLogFolder)) {
    std::string path = std::string(kLogFolder) + "/" + name;
    std::error_code ignored;
    bool is_link = fs::is_symlink(root + path, ignored);
    (is_link ? links : logs)
        .records.push_back(is_link ? link_record(root, path) : file_record(root, path));
  }
  Item properties = group("properties");
  const std::string folder = root + kPropertiesFolder + "/";
  for (const std::string& name : names_in(folder)) {
    std::string value = text_of(folder + name);
    properties.records.push_back({{"name", name, {}}, {"value", value, {}}});
  }
  Item dropbox = group("dropbox");
  for (const std::string& name : names_in(root + kDropBoxFolder)) {
    dropbox.records.push_back(dropbox_record(root, name));
  }
  return {links, logs, properties, dropbox, {"hand-off-block", hob_text(root), {}}};
}

}  // namespace qorextctl
