// SPDX-License-Identifier: Apache-2.0
// The upload of a KPI log of any size, packet by packet, so that no more of it is in memory than
// the packet under way.
#pragma once

#include <deque>
#include <optional>

#include "modem/kpi/kpi_packet.h"
#include "platform/linux/qmi_transport/descriptors.h"

namespace modem {

// A sequence id is one byte, and the receiver does not begin again at 0: a package ends here.
constexpr uint32_t kMaxPackagePackets = 255;

struct UploadOptions {
  std::string file = {};  // read by the modem, so its path as the modem sees it; or
  Bytes data = {};        // the log itself
  uint8_t package = 0;
  uint32_t packet_size = 0;  // log bytes a packet; 0: as many as fit
  uint32_t header = kLogHeader;
  bool is_headerless = false;
  uint32_t lose = 0;     // this packet of all is left out, counted from 1; 0: none
  uint32_t reorder = 0;  // this packet and the one behind it change places; 0: none
};
void describe(Archive& archive, UploadOptions& options);

// How many packages and packets a log becomes. Every packet but the very last one carries
// packet_size bytes, every package but the last one, or two, kMaxPackagePackets packets.
class UploadPlan {
 public:
  // Throws std::invalid_argument when the receiver could not take such packets.
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

  // The next indication; nothing at the end, which the upload then has come to, also when the log
  // cannot be read any more.
  std::optional<Bytes> next();

  // No more of it is to be sent.
  void fail(const std::string& why);

  bool is_over() const { return is_over_; }
  bool has_begun() const { return packets_ != 0; }

  // {"state", "packages", "packets", "bytes"} sent so far, of {"total_packets", "total_bytes"}, and
  // the "error" when it failed.
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

// All uploads: one runs at a time, the others wait in the order in which they were given.
class KpiUploads {
 public:
  // The number by which list() tells of it.
  uint32_t add(const UploadOptions& options);

  // The one whose packets are to be sent now; null when there is none.
  KpiUpload* current();

  // Oldest first; of those that are over only the last few.
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
