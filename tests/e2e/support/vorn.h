// SPDX-License-Identifier: Apache-2.0
// The KPI packets that the modem uploads, and the directory of the logs that come of them.
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

struct KpiPacket {
  unsigned package;
  unsigned sequence;  // the first packet of a package is 1
  bool is_last;
  Bytes payload;  // of a first packet, its header word comes first
};

// The modem sends the packet.
void upload(ModemProcess& modem, const KpiPacket& packet);
// A package of one packet.
void upload_log(ModemProcess& modem, unsigned package, const std::string& text);

// A package of as many packets as it takes.
void upload_in_packets(ModemProcess& modem, unsigned package, const std::string& text);

// Bytes that repeat nowhere near a packet's size.
std::string made_up_log(size_t size);

class VornFolder {
 public:
  // The folder is there and belongs to the daemon.
  explicit VornFolder(const PhoneRoot& phone);

  std::string path(const std::string& name) const { return folder_ + "/" + name; }

  // Begins with the text and is `size` bytes long, zeros that take no space behind the text.
  void put(const std::string& name, const std::string& text, size_t size = 0) const;
  void set_age(const std::string& name, long seconds) const;
  // Index link k as the daemon makes it.
  void link(unsigned index, const std::string& name) const;
  void clear() const;

  std::set<std::string> names() const;
  bool has(const std::string& name) const;
  std::string content(const std::string& name) const;
  bool begins_with(const std::string& name, const std::string& text) const;
  size_t size(const std::string& name) const;
  // The name of the log that index link k leads to; empty when there is no link, or no such log.
  std::string linked(unsigned index) const;

 private:
  const PhoneRoot& phone_;
  std::string folder_;
};

}  // namespace e2e
