// SPDX-License-Identifier: Apache-2.0
// The twenty SID/NID pairs: half-words in the modem's item, words in the parent's record.
#include "src/carrier/carrier_operations.h"
#include "src/carrier/nam.h"
#include "src/host/base/log.h"

namespace {

constexpr size_t kValues = 2 * kSidNidPairs;

}  // namespace

uint32_t get_sid_nid_pairs(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  %d ", 0);
  NamItemBuffer item;
  uint32_t rc = read_nam_item(kSidNidItem, item);
  for (size_t i = 0; i < kValues; ++i) put_le32(reply, load_le16(item + kSidAt + 2 * i));
  return status_from_modem(rc);
}

uint32_t set_sid_nid_pairs(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE %d ", cdma_id(request));
  LOGE("qorext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  %d ", 0);
  NamItemBuffer item = {};
  for (size_t i = 0; i < kValues; ++i) {
    uint32_t value = load_le32(request + kCdmaPayload + 4 * i);
    store_le16(item + kSidAt + 2 * i, static_cast<uint16_t>(value));
  }
  return status_from_modem(write_nam_item(kSidNidItem, item));
}
