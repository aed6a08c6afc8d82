// SPDX-License-Identifier: Apache-2.0
// The packets in which the modem uploads its KPI ("vorn") logs. Packets with one package id form a
// package; each packet is checked against the package being received.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The payload follows; that of a first packet begins with a header word.
struct KpiPacketHeader {
  uint8_t package_id;
  uint8_t sequence_id;
  uint8_t last_flag;
  uint8_t unused;
  uint16_t size;
};
static_assert(sizeof(KpiPacketHeader) == 6);

constexpr size_t kKpiPayload = sizeof(KpiPacketHeader);
constexpr uint32_t kKpiHeaderSize = 4;

struct KpiPacket {
  uint8_t package_id;
  uint8_t sequence_id;  // 1: the first of its package
  bool is_last;
  uint16_t size;           // of the payload
  const uint8_t* payload;  // readable for as many bytes as `size` says
};

constexpr uint8_t kFirstSequence = 1;

// The package being received. -1: no package, or its place in the sequence is not known.
struct KpiReceiver {
  int32_t package_id = -1;
  int32_t expected_sequence = -1;
  int lost = 0;  // the errno with which a packet of the package could not be stored, or 0

  void reset() { *this = {}; }
};

enum KpiAction {
  kKpiDrop,
  kKpiForward,             // a record for the parent
  kKpiStore,               // the whole payload
  kKpiStoreWithoutHeader,  // the payload after its header word
};

// Returns what to do with the packet; advances or resets the receiver. After kKpiForward the caller
// resets it. Accesses no file.
KpiAction check_kpi_packet(KpiReceiver& receiver, const KpiPacket& packet);
