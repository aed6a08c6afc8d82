// SPDX-License-Identifier: Apache-2.0
// The files of a phone that the daemon and the workstation's libraries find under a folder.
#pragma once

#include <optional>
#include <string>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"

namespace qorextctl {

// The modem's hand-off block: where it lies in the RAM device, and how many bytes it has.
constexpr uint64_t kHobOffset = 0xF540000;
constexpr size_t kHobSize = 0x8000;

constexpr const char* kHobRam = "/dev/qor_hob_ram";
constexpr const char* kHobPartition = "/dev/block/bootdevice/by-name/dhob";
constexpr const char* kPropertiesFolder = "/dev/__properties__";
constexpr const char* kDropBoxFolder = "/data/system/dropbox";
constexpr const char* kLogFolder = "/data/vorn";

// What the files say; by default that the phone was switched on as usual.
struct PhoneFiles {
  std::string power_up_reason = "0x00004000";
  std::string modem_restarts = "0";
  std::string ssr_reason = {};  // of the modem's last restart
  uint32_t hob_seed = 1;        // the block is hob_content() of it, unless
  std::string hob_file = {};    // names a file of kHobSize bytes
};

// The folders alone: a phone without the devices and files below.
std::optional<Error> make_phone_folders(const std::string& root);

// Folders, boot information, the modem's restart counter and reason, the HOB RAM with a block, the
// partition for it. What is there already is written anew, but for the partition, logs, properties
// and DropBox entries, which stay. Everything belongs to the radio user when root makes it.
std::optional<Error> prepare_phone(const std::string& root, const PhoneFiles& files);

// kHobSize bytes, for one seed always the same.
Bytes hob_content(uint32_t seed);

// For the daemon, which becomes this user when it is started by root.
bool give_to_radio_user(const std::string& path);

// Returns nothing if the property is not set.
std::optional<std::string> read_property(const std::string& root, const std::string& name);

}  // namespace qorextctl
