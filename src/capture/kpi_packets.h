// SPDX-License-Identifier: Apache-2.0
// The packets in which the modem uploads its KPI ("vorn") logs. Packets with one package id form a
// package; this is the check of each packet against the package being received, and touches no
// file.
#pragma once

#include <stddef.h>
#include <stdint.h>

// u8 package id, u8 sequence id, u8 last-packet flag, u8 not read, u16 payload size
// (little-endian), payload. A first packet's payload begins with a header word.
constexpr size_t kKpiPayload = 6;
constexpr uint32_t kKpiHeaderSize = 4;

struct KpiPacket {
  uint8_t package_id;
  uint8_t sequence_id;  // 1: the first of its package
  bool is_last;
  uint16_t size;           // of the payload
  const uint8_t* payload;  // readable for as many bytes as `size` says
};

constexpr uint8_t kFirstSequence = 1;

// The package being received; -1 when there is none, or when its place in the sequence is not
// known.
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
  kKpiStoreWithoutHeader,  // the payload behind its header word
};

// What is to become of the packet; advances or resets the receiver. After kKpiForward the receiver
// is for the caller to reset.
KpiAction check_kpi_packet(KpiReceiver& receiver, const KpiPacket& packet);
