// SPDX-License-Identifier: Apache-2.0
// Records of the modem about its networks.
#include <algorithm>

#include "src/carrier/carrier_handler.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

// The list of active APNs as the parent gets it: a count, then packed records.
constexpr uint32_t kApnRecordSize = 127;
constexpr uint32_t kApnListSize = 1 + kApnEntries * kApnRecordSize;
static_assert(kApnListSize == 1017);

// The order of the fields differs from that of the modem's entry.
void put_apn_record(CarrierReply& reply, const ApnEntry& entry) {
  put_bytes(reply, entry.name, kApnNameSize);
  put_le32(reply, entry.first_value);
  put_le32(reply, __builtin_bswap32(entry.second_value));  // the record's one big-endian value
  put_bytes(reply, entry.remaining_bytes, kApnRemainingSize);
}

// The TOT order as the parent sends and gets it.
struct __attribute__((packed)) TotOrder {
  uint16_t count;
  uint32_t entries[kTotEntries];
};
static_assert(sizeof(TotOrder) == 62);

}  // namespace

uint32_t get_lte_data(const uint8_t* request, CarrierReply& reply) {
  LOGE("handle_get_lte_data: EVENT VALUE %d ", cdma_id(request));
  LteData data = {};
  if (qor_qmi_sprint_get_lte_data(&data) == 0) return kStatusFailure;
  put_bytes(reply, &data, sizeof data);
  return kStatusSuccess;
}

uint32_t get_active_ehrpd_apn(const uint8_t*, CarrierReply& reply) {
  ActiveApnResponse response;
  if (qor_qmi_sprint_get_active_ehrpd_apn(&response) != 0) response = {};

  put_bytes(reply, &response.count, sizeof response.count);
  if (response.count_high != 0) {
    uint32_t count = std::min(uint32_t{response.count}, kApnEntries);
    for (uint32_t i = 0; i < count; ++i) put_apn_record(reply, response.entries[i]);
  }
  reply.length = kApnListSize;  // the list always has eight records; unused ones are zero
  return kStatusSuccess;
}

uint32_t get_tot_order(const uint8_t*, CarrierReply& reply) {
  TotOrderResponse response = qor_qmi_sprint_get_tot_order();
  TotOrder order = {response.count, {}};
  memcpy(order.entries, response.entries, sizeof order.entries);
  put_bytes(reply, &order, sizeof order);
  return kStatusSuccess;
}

uint32_t update_tot_order(const uint8_t* request, CarrierReply&) {
  LOGE("handle_update_tot_order: EVENT VALUE %d ", cdma_id(request));
  auto order = load<TotOrder>(request + kCdmaPayload);
  int result = 0;
  // More entries than the message holds: nothing is sent, and the reply has status 5.
  if (order.count <= kTotEntries) {
    TotOrderRequest message = {};
    message.count = order.count;
    memcpy(message.entries, order.entries, order.count * sizeof order.entries[0]);
    result = qor_qmi_sprint_update_tot_order(message);
  }
  LOGE("Update TOT order result - %d", result);
  return result > 0 ? kStatusSuccess : kStatusFailure;
}
