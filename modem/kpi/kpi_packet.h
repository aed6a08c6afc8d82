// SPDX-License-Identifier: Apache-2.0
// The packets in which a modem uploads its KPI logs, each in a utility indication.
#pragma once

#include <stdint.h>

#include "modem/messages/packet.h"
#include "modem/state/archive.h"

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

// The whole indication.
Bytes kpi_indication(const KpiPacket& packet);

// The payload that begins with this word.
Bytes with_header(uint32_t word, std::span<const uint8_t> content);

// One packet as a person composes it, right or wrong.
struct KpiPacketOptions {
  KpiPacket packet = {};
  uint32_t header = 0;
  bool has_header = false;
};
void describe(Archive& archive, KpiPacketOptions& options);
Bytes kpi_indication(const KpiPacketOptions& options);

}  // namespace modem
