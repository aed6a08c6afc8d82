// SPDX-License-Identifier: Apache-2.0
// The files of a phone, in a folder that the daemon uses as its root.
#pragma once

#include <optional>
#include <string>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"

namespace qorextctl {

// The offset of the modem's hand-off block in the RAM device, and its size in bytes.
constexpr uint64_t kHobOffset = 0xF540000;
constexpr size_t kHobSize = 0x8000;

constexpr const char* kHobRam = "/dev/qor_hob_ram";
constexpr const char* kHobPartition = "/dev/block/bootdevice/by-name/dhob";
constexpr const char* kPropertiesFolder = "/dev/__properties__";
constexpr const char* kDropBoxFolder = "/data/system/dropbox";
constexpr const char* kLogFolder = "/data/vorn";

// The content of the files. The defaults are those of a normal power-up.
struct PhoneFiles {
  std::string power_up_reason = "0x00004000";
  std::string modem_restarts = "0";
  std::string ssr_reason = {};  // of the modem's last restart
  uint32_t hob_seed = 1;        // for hob_content()
  std::string hob_file = {};    // a file with the hand-off block; empty: uses hob_seed
};

// Creates the folders only, without devices and files.
std::optional<Error> make_phone_folders(const std::string& root);

// Creates the folders, the boot information, the modem's restart counter and reason, the HOB RAM
// with a block, and the partition for it. Existing files are overwritten, except the partition,
// logs, properties and DropBox entries. Files that root creates belong to the radio user.
std::optional<Error> prepare_phone(const std::string& root, const PhoneFiles& files);

// Returns kHobSize bytes that depend only on the seed.
Bytes hob_content(uint32_t seed);

// Changes the owner if root calls it: a daemon that root starts becomes the radio user. Returns
// false and sets errno on failure.
bool give_to_radio_user(const std::string& path);

// Returns nothing if the property is not set.
std::optional<std::string> read_property(const std::string& root, const std::string& name);

}  // namespace qorextctl
