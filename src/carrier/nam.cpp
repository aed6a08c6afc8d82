// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/nam.h"

#include <string.h>

#include "src/carrier_modem/rde.h"
#include "src/host/base/log.h"

namespace {

constexpr uint32_t kUnknownHostCode = 0xFFFFFFFF;

// By the parent's code.
constexpr uint16_t kVocoderItemValues[] = {0x8000, 0x8002, 0x801C, 2, 9, 3, 0x44};
constexpr uint32_t kVocoderCodes = sizeof kVocoderItemValues / sizeof kVocoderItemValues[0];

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

uint32_t vocoder_from_item(uint16_t item_value) {
  for (uint32_t code = 0; code < kVocoderCodes; ++code) {
    if (kVocoderItemValues[code] == item_value) return code;
  }
  return kUnknownHostCode;
}
