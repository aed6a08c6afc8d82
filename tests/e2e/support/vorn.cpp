// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/vorn.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/value_or_throw.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

const std::string kPhoneFolder = "/data/vorn/";

std::string index_name(unsigned index) { return fmt::format(".{:04}", index); }

}  // namespace

void upload(ModemProcess& modem, const KpiPacket& packet) {
  Bytes bytes = {static_cast<uint8_t>(packet.package), static_cast<uint8_t>(packet.sequence),
                 static_cast<uint8_t>(packet.is_last), 0};
  bytes = bytes + le16(static_cast<uint32_t>(packet.payload.size())) + packet.payload;
  modem.command("indicate utils type=1 data=" + as_hex(bytes));
}

void upload_log(ModemProcess& modem, unsigned package, const std::string& text) {
  upload(modem, {package, 1, true, le32(kLogHeader) + characters(text)});
}

void upload_in_packets(ModemProcess& modem, unsigned package, const std::string& text) {
  constexpr size_t kPacket = 500;
  for (size_t at = 0; at < text.size(); at += kPacket) {
    Bytes payload = characters(text.substr(at, kPacket));
    if (at == 0) payload = le32(kLogHeader) + payload;
    upload(modem, {package, static_cast<unsigned>(at / kPacket + 1), at + kPacket >= text.size(),
                   payload});
  }
}

std::string random_log(size_t size) {
  std::string log(size, '\0');
  uint32_t value = 1;
  for (char& byte : log) {
    value = value * 1664525 + 1013904223;
    byte = static_cast<char>(value >> 24);
  }
  return log;
}

VornFolder::VornFolder(const PhoneRoot& phone)
    : phone_(phone), folder_(phone.folder() + "/data/vorn") {
  if (fs::create_directory(folder_)) phone_.give_to_daemon(folder_);
}

void VornFolder::put(const std::string& name, const std::string& text, size_t size) const {
  std::ofstream(path(name), std::ios::binary) << text;
  if (size != 0) fs::resize_file(path(name), size);
  phone_.give_to_daemon(path(name));
}

void VornFolder::set_age(const std::string& name, long seconds) const {
  timespec when = {time(nullptr) - seconds, 0};
  timespec both[] = {when, when};
  int result = utimensat(AT_FDCWD, path(name).c_str(), both, AT_SYMLINK_NOFOLLOW);
  if (result != 0) throw_errno(path(name));
}

void VornFolder::link(unsigned index, const std::string& name) const {
  fs::create_symlink(kPhoneFolder + name, path(index_name(index)));
}

void VornFolder::clear() const {
  for (const std::string& name : names()) fs::remove(path(name));
}

std::set<std::string> VornFolder::names() const {
  std::set<std::string> found;
  for (const auto& entry : fs::directory_iterator(folder_)) found.insert(entry.path().filename());
  return found;
}

bool VornFolder::has(const std::string& name) const { return fs::exists(path(name)); }

std::string VornFolder::content(const std::string& name) const { return content_of(path(name)); }

bool VornFolder::begins_with(const std::string& name, const std::string& text) const {
  std::ifstream file(path(name), std::ios::binary);
  std::string start(text.size(), '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  return file && start == text;
}

size_t VornFolder::size(const std::string& name) const { return fs::file_size(path(name)); }

std::string VornFolder::linked(unsigned index) const {
  std::error_code error;
  std::string target = fs::read_symlink(path(index_name(index)), error);
  if (error || !target.starts_with(kPhoneFolder)) return "";
  std::string name = target.substr(kPhoneFolder.size());
  return has(name) ? name : "";
}

}  // namespace e2e
