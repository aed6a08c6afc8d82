// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "src/carrier_modem/operations.h"
#include "src/host/base/bytes.h"
#include "src/host/base/log.h"

namespace {

constexpr int32_t kLteBcConfigItem = 53;
constexpr int32_t kConfigVersionItem = 8029;
constexpr int32_t kFlexVersionItem = 8028;
constexpr int32_t kImeiSvItem = 41;

constexpr uint32_t kBandClassSize = 16;
constexpr uint32_t kTextSize = 1024;
constexpr int kVersionNumberLength = 13;
constexpr int kVersionLength = 63;

// An item as text; the byte after the longest item stays zero and ends it.
using ItemText = char[kTextSize + 1];

uint32_t read_item(int32_t item, ItemText& text) {
  return qor_qmi_sprint_rde_read(item, 0, 0, text, kTextSize, nullptr);
}

// The text after the last hyphen.
const char* version_number(const ItemText& text) {
  const char* hyphen = strrchr(text, '-');
  if (hyphen != nullptr) return hyphen + 1;
  LOGE("qor_qmi_read_baseband_config_version: no valid delimiter in %s", text);
  return "Unknown";
}

void set_cut(const char* property, const char* text, int length) {
  char value[PROPERTY_VALUE_MAX];
  snprintf(value, sizeof value, "%.*s", length, text);
  property_set(property, value);
}

}  // namespace

// The first four bytes of the item are one signed number; the property is "0" when it cannot be
// read.
int publish_lte_bc_config() {
  uint8_t item[kBandClassSize] = {};
  char text[21] = "0";
  if (qor_qmi_sprint_rde_read(kLteBcConfigItem, 0, 0, item, sizeof item, nullptr) == kRdeSuccess) {
    auto classes = static_cast<int32_t>(load_le32(item));
    snprintf(text, sizeof text, "%lld", static_cast<long long>(classes));
  }
  return property_set("ril.lte.bc.config", text);
}

void qor_qmi_read_baseband_config_version() {
  ItemText text = {};
  uint32_t status = read_item(kConfigVersionItem, text);
  LOGE("qor_qmi_read_baseband_config_version: fsg version NV read status(%d)", status);
  const char* number = status == kRdeSuccess ? version_number(text) : "Unknown";
  set_cut("ril.baseband.config.ver_num", number, kVersionNumberLength);

  // The same buffer, not cleared: a shorter item keeps the tail of the one before. This is
  // deliberate.
  status = read_item(kFlexVersionItem, text);
  LOGE("qor_qmi_read_baseband_config_version: flex nv status(%d)", status);
  if (status == kRdeSuccess) set_cut("ril.baseband.config.version", text, kVersionLength);
}

void update_imei_sv() {
  char text[PROPERTY_VALUE_MAX];
  property_get("ro.radio.imei.sv", text, "");
  size_t length = strlen(text);
  if (length != 1 && length != 2) {
    LOGE("IMEI_SV property is not in the range/not defined\n");
    return;
  }
  auto number = static_cast<uint8_t>(atoi(text));  // 0 for letters, 255 for "-1"
  LOGE("IMEI_SV number update  %d", number);
  uint32_t rc = qor_qmi_sprint_rde_write(kImeiSvItem, 0, 0, sizeof number, &number);
  LOGE("IMEI_SV property write status if 0-success else failure return %d\n", rc);
}
