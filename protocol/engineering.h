// SPDX-License-Identifier: Apache-2.0
// The engineering records, which the modem gives as hexadecimal text: packed, little-endian.
#pragma once

#include "protocol/field.h"

namespace protocol {

constexpr int kActiveSetSize = 6;
constexpr int kNeighborSetSize = 40;
constexpr int kSectorIdSize = 16;

// The CDMA 1x call.
struct CallProcessingRecord {
  uint32_t frame_error_rate;
  uint8_t unused_1[8];
  uint8_t active_pilots;
  uint8_t neighbor_pilots;
  uint8_t candidate_pilots;
  uint8_t unused_2;
  uint16_t best_active_pilot;
  uint16_t best_active_strength;
  uint16_t best_neighbor_pilot;
  uint16_t best_neighbor_strength;
  uint16_t sid;
  uint16_t nid;
  uint16_t channel;
  uint16_t service_option;
  uint8_t p_rev_in_use;
  uint8_t band;
  uint8_t lna_status;
  uint8_t unused_3;
  uint16_t state;
  int16_t tx_power;
  uint16_t rssi;
  uint16_t base_id;
  int32_t base_latitude;
  int32_t base_longitude;
  uint16_t active_set_pn[kActiveSetSize];
  uint16_t active_set_strength[kActiveSetSize];
  uint16_t neighbor_set_pn[kNeighborSetSize];
  uint16_t s_call_counter;
  uint16_t dropped_calls;
  uint16_t last_call_indicator;
  uint16_t rate_reduction;
};
static_assert(sizeof(CallProcessingRecord) == 164);

// The EVDO (HDR) session.
struct EvdoRecord {
  uint16_t channel;
  uint8_t uati_color_code;
  uint8_t unused_1;
  uint32_t tx_uati;
  uint16_t pilot_pn;
  int16_t rssi;
  int32_t rx0_power;  // dBm
  int32_t rx1_power;  // dBm
  uint16_t measured_packets;
  uint16_t error_packets;
  uint8_t session_state;
  uint8_t at_state;
  uint8_t users;
  uint8_t hybrid_mode;
  uint8_t mac_index;
  uint8_t sector_id[kSectorIdSize];
  uint8_t unused_2;
  int16_t pilot_energy;
  uint8_t drc_cover;
  uint8_t sinr;
  uint8_t an_auth_status;
  uint8_t unused_3;
};
static_assert(sizeof(EvdoRecord) == 52);

// Their members, under the names that the fields of the replies have.
const Layout& call_processing_record();
const Layout& evdo_record();

}  // namespace protocol
