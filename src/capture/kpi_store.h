// SPDX-License-Identifier: Apache-2.0
// Keeps packages of the KPI log: each in a temporary file of its own until its last packet, then
// appended to the current log.
#pragma once

#include <stdint.h>

#include "src/capture/kpi_logs.h"
#include "src/capture/kpi_packets.h"

struct KpiStore {
  bool has_directory = false;
  KpiLogState logs;
};

// Writes the payload after its first `skip` bytes to the package's temporary file. After the last
// packet the receiver is reset and the file merged into the current log. Failures are logged and
// drop the packet; a package that has lost one is not merged.
void store_kpi_packet(KpiStore& store, KpiReceiver& receiver, const KpiPacket& packet,
                      uint32_t skip);
