// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/nam.h"

#include <string.h>

#include "src/carrier/carrier_handler.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

constexpr uint32_t kUnknownHostCode = 0xFFFFFFFF;

// Indexed by the parent's code.
constexpr uint16_t kVocoderItemValues[] = {0x8000, 0x8002, 0x801C, 2, 9, 3, 0x44};
constexpr uint32_t kVocoderCodes = sizeof kVocoderItemValues / sizeof kVocoderItemValues[0];

constexpr size_t kSidNidValues = 2 * kSidNidPairs;

}  // namespace

uint32_t read_nam_item(const NamItem& item, NamItemBuffer& buffer) {
  memset(buffer, 0, sizeof buffer);
  uint32_t rc = qor_qmi_sprint_rde_read(item.id, 0, 0, buffer, sizeof buffer, nullptr);
  LOGE("qorext_hook_sprint_get_nam_item: READ NV VALUE %d ", rc);
  return rc;
}

uint32_t write_nam_item(const NamItem& item, const NamItemBuffer& buffer) {
  uint32_t rc = qor_qmi_sprint_rde_write(item.id, 0, 0, item.size, buffer);
  LOGE("qorext_hook_sprint_set_nam_item: WRITE NV VALUE %d ", rc);
  return rc;
}

uint16_t vocoder_to_item(uint32_t host_code) {
  return kVocoderItemValues[host_code < kVocoderCodes ? host_code : 0];
}

// The modem may hold a code that the parent has no number for.
uint32_t vocoder_from_item(uint16_t item_value) {
  for (uint32_t code = 0; code < kVocoderCodes; ++code) {
    if (kVocoderItemValues[code] == item_value) return code;
  }
  return kUnknownHostCode;
}

// The twenty SID/NID pairs are 16-bit values in the modem's item and 32-bit values in the parent's
// record.
uint32_t get_sid_nid_pairs(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  %d ", 0);
  NamItemBuffer item;
  uint32_t rc = read_nam_item(kSidNidItem, item);
  for (size_t i = 0; i < kSidNidValues; ++i) put_le32(reply, load_le16(item + kSidAt + 2 * i));
  return status_from_modem(rc);
}

uint32_t set_sid_nid_pairs(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE %d ", cdma_id(request));
  LOGE("qorext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  %d ", 0);
  NamItemBuffer item = {};
  for (size_t i = 0; i < kSidNidValues; ++i) {
    uint32_t value = load_le32(request + kCdmaPayload + 4 * i);
    store_le16(item + kSidAt + 2 * i, static_cast<uint16_t>(value));
  }
  return status_from_modem(write_nam_item(kSidNidItem, item));
}
