// Keeps packages of the KPI log: each in a temporary file of its own until its last packet, then
// appended to the current log.
#pragma once

#include <stdint.h>

#include "capture/kpi_packets.h"

// Writes the payload behind its first `skip` bytes to the package's temporary file. After the last
// packet the receiver is reset and the file merged into the current log. Failures are logged and
// drop the packet.
void store_kpi_packet(KpiReceiver& receiver, const KpiPacket& packet, uint32_t skip);
