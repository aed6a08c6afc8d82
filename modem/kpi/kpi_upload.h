// SPDX-License-Identifier: Apache-2.0
// The upload of KPI logs in utility indications. A log of any size is read packet by packet, so
// that only one packet is in memory.
#pragma once

#include <stdint.h>

#include <deque>
#include <optional>

#include "modem/messages/packet.h"
#include "modem/state/archive.h"
#include "platform/linux/qmi_transport/descriptors.h"

namespace modem {

// u8 package id, u8 sequence id, u8 last-packet flag, u8 zero, u16 payload size (little-endian),
// payload. A first packet's payload begins with a header word, little-endian.
constexpr size_t kKpiPacketHeader = 6;
constexpr size_t kKpiWordSize = 4;
constexpr size_t kMaxKpiPayload = 512 - kKpiPacketHeader;

constexpr uint8_t kFirstSequence = 1;
constexpr uint32_t kLogHeader = 0x01C0FFEE;

struct KpiPacket {
  uint8_t package = 0;
  uint8_t sequence = kFirstSequence;
  bool is_last = true;
  Bytes payload = {};  // at most kMaxKpiPayload
};

// The packet of the indication.
Bytes kpi_indication(const KpiPacket& packet);

// A payload that begins with this word.
Bytes with_header(uint32_t word, std::span<const uint8_t> content);

// One packet as a person specifies it, valid or not.
struct KpiPacketOptions {
  KpiPacket packet = {};
  uint32_t header = 0;
  bool has_header = false;
};
void describe(Archive& archive, KpiPacketOptions& options);
Bytes kpi_indication(const KpiPacketOptions& options);

// A sequence id is one byte, and the receiver does not accept a wrap-around.
constexpr uint32_t kMaxPackagePackets = 255;

struct UploadOptions {
  std::string file = {};  // a path that the modem can read; or
  Bytes data = {};        // the log itself
  uint8_t package = 0;
  uint32_t packet_size = 0;  // log bytes per packet; 0: as many as fit
  uint32_t header = kLogHeader;
  bool is_headerless = false;
  uint32_t lose = 0;     // number of the packet that is not sent, counted from 1; 0: none
  uint32_t reorder = 0;  // this packet and the next one change places; 0: none
};
void describe(Archive& archive, UploadOptions& options);

// The division of a log into packages and packets. Every packet but the last has packet_size bytes;
// every package but the last, or the last two, has kMaxPackagePackets packets.
class UploadPlan {
 public:
  // Throws std::invalid_argument if the receiver cannot accept the packets.
  UploadPlan(const UploadOptions& options, uint64_t bytes);

  struct Place {
    uint32_t package;   // counted from 0
    uint32_t sequence;  // counted from kFirstSequence
    bool is_last;       // of its package
    uint64_t offset;    // in the log
    uint32_t size;
  };
  // Of packet `index`, counted from 0.
  Place place(uint64_t index) const;

  uint32_t packet_size() const { return packet_size_; }
  uint64_t bytes() const { return bytes_; }
  uint64_t packets() const { return packets_; }
  uint64_t packages() const { return packages_; }

 private:
  uint32_t packet_size_;
  uint64_t bytes_;
  uint64_t packets_;
  uint64_t packages_;
  uint64_t last_package_;  // the index of its first packet
};

class KpiUpload {
 public:
  // Opens the log. Throws std::invalid_argument.
  explicit KpiUpload(const UploadOptions& options);

  // The next indication. Nothing at the end, or when the log cannot be read; the upload is then
  // over.
  std::optional<Bytes> next();

  // Ends the upload.
  void fail(const std::string& why);

  bool is_over() const { return is_over_; }
  bool has_begun() const { return packets_ != 0; }

  // {"state", "packages", "packets", "bytes"} so far, of {"total_packets", "total_bytes"}; "error"
  // if it failed.
  nlohmann::json progress() const;

 private:
  bool is_lost(uint64_t index) const { return index + 1 == options_.lose; }
  uint64_t reordered(uint64_t index) const;
  std::optional<Bytes> packet(uint64_t index);

  UploadOptions options_;
  qmi_transport::ScopedFd log_;
  UploadPlan plan_;
  uint64_t next_ = 0;
  uint64_t packets_ = 0;
  uint64_t bytes_ = 0;
  uint64_t packages_ = 0;
  bool is_over_ = false;
  std::string error_;
};

// All uploads. One runs at a time, in the order of add().
class KpiUploads {
 public:
  // Returns the number that list() shows for it.
  uint32_t add(const UploadOptions& options);

  // The running upload; null if there is none.
  KpiUpload* current();

  // The oldest first. Only the last few of those that are over.
  nlohmann::json list() const;

 private:
  struct Numbered {
    uint32_t number;
    KpiUpload upload;
  };
  std::deque<Numbered> uploads_;
  uint32_t last_number_ = 0;
};

}  // namespace modem
