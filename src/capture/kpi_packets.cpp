// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_packets.h"

#include "src/host/base/bytes.h"
#include "src/host/base/log.h"

namespace {

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

}  // namespace

KpiAction check_kpi_packet(KpiReceiver& receiver, const KpiPacket& packet) {
  if (receiver.package_id == -1) receiver.package_id = packet.package_id;
  if (receiver.expected_sequence == -1) receiver.expected_sequence = packet.sequence_id;

  if (!fits_package(receiver, packet)) {
    receiver.reset();
    return kKpiDrop;
  }
  KpiAction action = packet.sequence_id == kFirstSequence
                         ? action_of_header(load_le32(packet.payload))
                         : kKpiStore;
  // Not the packet's own number: a package that starts anew under its own id goes on counting from
  // where it was. That is meant.
  if (action != kKpiForward) ++receiver.expected_sequence;
  return action;
}
