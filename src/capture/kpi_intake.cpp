// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_intake.h"

#include <string.h>

#include "src/capture/kpi_packets.h"
#include "src/capture/kpi_store.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/utility_messages.h"

namespace {

constexpr size_t kPackageIdAt = 0;
constexpr size_t kSequenceIdAt = 1;
constexpr size_t kLastFlagAt = 2;
constexpr size_t kSizeAt = 4;

constexpr uint32_t kKpiMessage = 0x04000401;
constexpr uint32_t kForwardedSizeMask = 0xFF;  // a longer record is cut by its high byte; meant

KpiReceiver g_receiver;
KpiStore g_store;

// Room for any size that a packet can state; what the packet does not hold stays zero.
uint8_t g_packet[kKpiPayload + UINT16_MAX];

KpiPacket parse_packet(const uint8_t* bytes) {
  return {bytes[kPackageIdAt], bytes[kSequenceIdAt], bytes[kLastFlagAt] == 1,
          load_le16(bytes + kSizeAt), bytes + kKpiPayload};
}

void vorn_handle_kpi_data(const KpiPacket& packet) {
  uint32_t size = packet.size & kForwardedSizeMask;
  Frame frame = unsolicited_generic(kKpiMessage, size);
  if (frame) {
    memcpy(frame.at(kUnsolGenericData), packet.payload, size);
    writeUnsolToParent(frame);
    LOGE("vorn_handle_kpi_data: send data out");
  }
  g_receiver.reset();
}

}  // namespace

void vornIndHndlr(const uint8_t* packet) {
  memcpy(g_packet, packet, kUtilityDataSize);
  KpiPacket parsed = parse_packet(g_packet);

  switch (check_kpi_packet(g_receiver, parsed)) {
    case kKpiDrop:
      break;
    case kKpiForward:
      vorn_handle_kpi_data(parsed);
      break;
    case kKpiStore:
      store_kpi_packet(g_store, g_receiver, parsed, 0);
      break;
    case kKpiStoreWithoutHeader:
      store_kpi_packet(g_store, g_receiver, parsed, kKpiHeaderSize);
      break;
  }
}
