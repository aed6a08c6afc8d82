// SPDX-License-Identifier: Apache-2.0
// Readable views of NV items. The modem stores only the items.
#pragma once

#include <stdint.h>

#include <string>

#include "modem/state/nv_store.h"
#include "protocol/nv_items.h"

namespace modem {

constexpr size_t kSpcSize = protocol::kCodeSize;
constexpr NvKey kSpcItem{protocol::nv_item_named("spc").id};

constexpr size_t kMdnDigits = protocol::nv_item::kMdnDigits;

// The CDMA number assignment module 0.
struct Nam {
  std::string mdn;         // at most kMdnDigits
  std::string min;         // 10 digits
  std::string imsi_mcc;    // 3 digits
  std::string imsi_11_12;  // 2 digits
  std::string imsi_t;      // 15 digits: MCC, IMSI_11_12, 10-digit IMSI_S
  uint16_t home_sid = 0;
  uint16_t home_nid = 0;
  uint8_t scm = 0;
  uint16_t primary_channel_a = 0;
  uint16_t primary_channel_b = 0;
  uint16_t secondary_channel_a = 0;
  uint16_t secondary_channel_b = 0;
  uint16_t vocoder = 0;
  uint8_t overload_class = 0;
};

// Missing items read as zeros.
Nam load_nam(const NvStore& nv);
// Strings must have the digits named above. Other bytes of the items do not change.
void store_nam(NvStore& nv, const Nam& nam);

struct Settings {
  std::string spc;  // 6 digits
  uint8_t mob_p_rev = 0;
  uint8_t lte_option = 0;
  uint8_t ddtm = 0;
  uint8_t imei_sv = 0;
  uint32_t lte_bc_config = 0;
  std::string fsg_version;
  std::string flex_version;
};

Settings load_settings(const NvStore& nv);
void store_settings(NvStore& nv, const Settings& settings);

}  // namespace modem
