// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_packets.h"

#include "src/capture/capture.h"
#include "src/capture/kpi_store.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/utility_messages.h"

namespace {

constexpr uint32_t kKpiMessage = 0x04000401;
constexpr uint32_t kForwardedSizeMask = 0xFF;  // the high byte of the size is dropped: deliberate

// All of these belong to the client library's callback thread, which runs one indication at a time.
KpiReceiver g_receiver;
KpiStore g_store;

// Room for any size that a packet can state; beyond the packet's end it stays zero.
uint8_t g_packet[kKpiPayload + UINT16_MAX];

struct KpiHeader {
  uint32_t word;
  KpiAction action;
};

constexpr KpiHeader kKpiHeaders[] = {
    {0x01C0FFEE, kKpiStoreWithoutHeader},
    {0xFFFFFFFF, kKpiStore             },
    {0x02C0FFEE, kKpiForward           },
    {0x03C0FFEE, kKpiForward           },
    {0x06C0FFEE, kKpiForward           },
    {0x07C0FFEE, kKpiForward           },
    {0x08C0FFEE, kKpiForward           },
};

// The order of the checks is visible in the log: only the first failure is reported.
bool fits_package(const KpiReceiver& receiver, const KpiPacket& packet) {
  int32_t sequence = packet.sequence_id;
  if (packet.package_id != receiver.package_id) {
    LOGE("vornIndHndlr: wrong pckage id [%d] received, cur [%d]", packet.package_id,
         receiver.package_id);
    return false;
  }
  if (sequence != kFirstSequence && sequence != receiver.expected_sequence) {
    LOGE("vornIndHndlr: wrong seq id [%d] received, cur [%d]", sequence,
         receiver.expected_sequence);
    return false;
  }
  if (packet.size == 0) {
    LOGE("vornIndHndlr: zero pckage size");
    return false;
  }
  if (sequence == kFirstSequence && packet.size <= kKpiHeaderSize) {
    LOGE("vornIndHndlr: bad header");
    return false;
  }
  return true;
}

KpiAction action_of_header(uint32_t word) {
  LOGE("vornIndHndlr: header 0x%x", word);
  for (const KpiHeader& header : kKpiHeaders) {
    if (header.word == word) return header.action;
  }
  LOGE("vornIndHndlr: unknown header 0x%x", word);
  return kKpiStore;
}

void vorn_handle_kpi_data(const KpiPacket& packet) {
  if (send_unsolicited_generic(kKpiMessage, packet.payload, packet.size & kForwardedSizeMask)) {
    LOGE("vorn_handle_kpi_data: send data out");
  }
  g_receiver.reset();
}

}  // namespace

KpiAction check_kpi_packet(KpiReceiver& receiver, const KpiPacket& packet) {
  if (receiver.package_id == -1) receiver.package_id = packet.package_id;
  if (receiver.expected_sequence == -1) receiver.expected_sequence = packet.sequence_id;

  if (!fits_package(receiver, packet)) {
    receiver.reset();  // the next packet of any package is accepted
    return kKpiDrop;
  }
  KpiAction action = packet.sequence_id == kFirstSequence
                         ? action_of_header(load_le32(packet.payload))
                         : kKpiStore;
  // Counts up instead of taking the packet's own number: a package that starts again under its own
  // id continues the count. This is deliberate.
  if (action != kKpiForward) ++receiver.expected_sequence;
  return action;
}

void vornIndHndlr(const uint8_t* packet) {
  memcpy(g_packet, packet, kUtilityDataSize);
  auto header = load<KpiPacketHeader>(g_packet);
  KpiPacket parsed = {header.package_id, header.sequence_id, header.last_flag == 1, header.size,
                      g_packet + kKpiPayload};

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
