// Keeps packages of the KPI log: each in a temporary file of its own until its last packet, then
// appended to the current log.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#include "capture/kpi_packets.h"

constexpr size_t kPackageIds = 256;

struct KpiStore {
  bool has_directory = false;
  time_t handed_off = 0;  // when a log last went to the DropBox; see vorn_update_current_log
  // By package id: the errno with which a packet was lost since the package began, or 0.
  int lost[kPackageIds] = {};
};

// Writes the payload after its first `skip` bytes to the package's temporary file. After the last
// packet the receiver is reset and the file merged into the current log. Failures are logged and
// drop the packet; a package that lacks one is never merged.
void store_kpi_packet(KpiStore& store, KpiReceiver& receiver, const KpiPacket& packet,
                      uint32_t skip);
