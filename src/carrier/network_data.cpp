// SPDX-License-Identifier: Apache-2.0
// Records that the modem reports of its networks.
#include <algorithm>

#include "src/carrier/carrier_operations.h"
#include "src/carrier_modem/lte_data.h"
#include "src/carrier_modem/vendor_operations.h"
#include "src/host/base/log.h"

namespace {

// The list of active APNs as the parent gets it: a count, then packed records.
constexpr uint32_t kApnRecordSize = 127;
constexpr uint32_t kApnListSize = 1 + kApnEntries * kApnRecordSize;
static_assert(kApnListSize == 1017);

void put_apn_record(CarrierReply& reply, const ApnEntry& entry) {
  put_bytes(reply, entry.name, kApnNameSize);
  put_le32(reply, entry.first);
  put_le32(reply, __builtin_bswap32(entry.second));  // an address: the one big-endian word
  put_bytes(reply, entry.tail, kApnTailSize);
}

constexpr size_t kTotCount = kCdmaPayload;
constexpr size_t kTotOrderEntries = kCdmaPayload + 2;

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
  if (response.has_entries != 0) {
    uint32_t count = std::min(uint32_t{response.count}, kApnEntries);
    for (uint32_t i = 0; i < count; ++i) put_apn_record(reply, response.entries[i]);
  }
  reply.length = kApnListSize;
  return kStatusSuccess;
}

uint32_t get_tot_order(const uint8_t*, CarrierReply& reply) {
  TotOrderResponse response = qor_qmi_sprint_get_tot_order();
  put_bytes(reply, &response.count, sizeof response.count);
  put_bytes(reply, response.entries, sizeof response.entries);
  return kStatusSuccess;
}

uint32_t update_tot_order(const uint8_t* request, CarrierReply&) {
  LOGE("handle_update_tot_order: EVENT VALUE %d ", cdma_id(request));
  TotOrderRequest order = {};
  order.count = load_le16(request + kTotCount);

  int result = 0;
  if (order.count <= kTotEntries) {
    memcpy(order.entries, request + kTotOrderEntries, order.count * sizeof order.entries[0]);
    result = qor_qmi_sprint_update_tot_order(order);
  }
  LOGE("Update TOT order result - %d", result);
  return result > 0 ? kStatusSuccess : kStatusFailure;
}
