// SPDX-License-Identifier: Apache-2.0
// The KPI packets that the modem uploads, and the directory of the resulting logs.
#pragma once

#include <set>
#include <string>

#include "tests/e2e/support/modem_process.h"
#include "tests/e2e/support/phone_root.h"
#include "tests/e2e/support/wire.h"

namespace e2e {

constexpr uint32_t kLogHeader = 0x01C0FFEE;

// A log that would reach this size is rotated.
constexpr size_t kLogLimit = 31457280;

// Logs that tests create.
constexpr char kCurrentLog[] = "vorn_20260102000000.log";
constexpr char kPreviousLog[] = "vorn_20260101000000.log";

struct KpiPacket {
  unsigned package;
  unsigned sequence;  // the first packet of a package is 1
  bool is_last;
  Bytes payload;  // the first packet's starts with the header word
};

void upload(ModemProcess& modem, const KpiPacket& packet);
// Uploads a package of one packet.
void upload_log(ModemProcess& modem, unsigned package, const std::string& text);

// Uploads a package of as many packets as the text needs.
void upload_in_packets(ModemProcess& modem, unsigned package, const std::string& text);

// Pseudorandom bytes: two packets never hold the same bytes.
std::string random_log(size_t size);

class VornFolder {
 public:
  // Creates the folder for the daemon.
  explicit VornFolder(const PhoneRoot& phone);

  std::string path(const std::string& name) const { return folder_ + "/" + name; }

  // Creates a file with the text, extended to `size` bytes by a hole.
  void put(const std::string& name, const std::string& text, size_t size = 0) const;
  void set_age(const std::string& name, long seconds) const;
  // Creates an index link as the daemon does.
  void link(unsigned index, const std::string& name) const;
  void clear() const;

  std::set<std::string> names() const;
  bool has(const std::string& name) const;
  std::string content(const std::string& name) const;
  bool begins_with(const std::string& name, const std::string& text) const;
  size_t size(const std::string& name) const;
  // Returns the name of the log that an index link names, or "" if the link or the log is missing.
  std::string linked(unsigned index) const;

 private:
  const PhoneRoot& phone_;
  std::string folder_;
};

}  // namespace e2e
