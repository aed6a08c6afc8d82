// SPDX-License-Identifier: Apache-2.0
#include "modem/state/nam.h"
#include "modem/state/state.h"

namespace modem {
namespace {

constexpr uint16_t kSystem = 4700;
constexpr uint16_t kNetwork = 12;

NvStore factory_nv() {
  NvStore nv;
  store_nam(nv, {.mdn = "9135550142",
                 .min = "9135550142",
                 .imsi_mcc = "310",
                 .imsi_11_12 = "00",
                 .imsi_t = "310009135550142",
                 .home_sid = kSystem,
                 .home_nid = kNetwork,
                 .scm = 0x2A,
                 .primary_channel_a = 283,
                 .primary_channel_b = 384,
                 .secondary_channel_a = 691,
                 .secondary_channel_b = 777,
                 .vocoder = 0x44,
                 .overload_class = 2});
  store_settings(nv, {.spc = "000000",
                      .mob_p_rev = 6,
                      .lte_option = 1,
                      .ddtm = 0,
                      .imei_sv = 1,
                      .lte_bc_config = 0x03000008,
                      .fsg_version = "QOR-FSG-01.02.03",
                      .flex_version = "QOR-FLEX-04.05.06"});
  nv.put({37}, {0x01, 0x00, 0x00, 0x00});
  nv.put({38}, {0x00, 0x00, 0x00, 0x00});
  nv.put({39}, {0x02, 0x00, 0x00, 0x00});
  nv.put({10003}, {0x1E, 0x00, 0x00, 0x00});
  return nv;
}

LteCell factory_cell() {
  return {.service_state = kFullService,
          .mcc = 1,
          .mnc = 1,
          .network_description = "Lakeshore",
          .cell_id = 0x01A2D03,
          .first_channel = 26365,
          .second_channel = 8365,
          .channel_third_value = 25,
          .channel_fourth_value = 3,
          .rssi = -67,
          .rsrq = -9,
          .rsrp = -96,
          .snr = 134,
          .in_traffic = 1,
          .tx_power = -45};
}

Bytes apn_bytes(uint8_t last) {
  return {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last};
}

protocol::CallProcessingRecord factory_call() {
  return {.frame_error_rate = 4,
          .unused_1 = {},
          .active_pilots = 2,
          .neighbor_pilots = 4,
          .candidate_pilots = 1,
          .unused_2 = 0,
          .best_active_pilot = 168,
          .best_active_strength = 14,
          .best_neighbor_pilot = 336,
          .best_neighbor_strength = 27,
          .sid = kSystem,
          .nid = kNetwork,
          .channel = 283,
          .service_option = 68,
          .p_rev_in_use = 6,
          .band = 1,
          .lna_status = 1,
          .unused_3 = 0,
          .state = 4,
          .tx_power = -12,
          .rssi = 78,
          .base_id = 2051,
          .base_latitude = 563040,
          .base_longitude = -1362240,
          .active_set_pn = {168, 12},
          .active_set_strength = {14, 19},
          .neighbor_set_pn = {336, 24, 180, 492},
          .s_call_counter = 7,
          .dropped_calls = 1,
          .last_call_indicator = 2,
          .rate_reduction = 0};
}

protocol::EvdoRecord factory_session() {
  return {
      .channel = 476,
      .uati_color_code = 37,
      .unused_1 = 0,
      .tx_uati = 0x2507C1A9,
      .pilot_pn = 168,
      .rssi = -71,
      .rx0_power = -72,
      .rx1_power = -75,
      .measured_packets = 1200,
      .error_packets = 9,
      .session_state = 2,
      .at_state = 3,
      .users = 5,
      .hybrid_mode = 1,
      .mac_index = 72,
      .sector_id = {0x00, 0x84, 0x0A, 0xC0, 0, 0, 0, 0, 0, 0, 0x0A, 0x8A, 0x12, 0x5C, 0x00, 0x01},
      .unused_2 = 0,
      .pilot_energy = -6,
      .drc_cover = 2,
      .sinr = 9,
      .an_auth_status = 1,
      .unused_3 = 0};
}

// Invented: falling 16-bit numbers.
Bytes pfp_bytes() {
  constexpr uint16_t kFirst = 560;
  constexpr uint16_t kStep = 5;
  Bytes bytes;
  for (uint16_t value = kFirst; bytes.size() < kPfpRemainingSize;
       value = static_cast<uint16_t>(value - kStep)) {
    bytes.push_back(static_cast<uint8_t>(value));
    bytes.push_back(static_cast<uint8_t>(value >> 8));
  }
  return bytes;
}

// Invented: the meaning of the bytes is not known.
Bytes data_plmn_record() {
  Bytes record = {1, 0, 0, 0, 1, 0, 1, 0, 8, 0, 0, 0};
  record.resize(kDataPlmnSize);
  return record;
}

}  // namespace

State factory_state() {
  State state;
  state.nv = factory_nv();
  state.lte = factory_cell();
  state.ehrpd_apns = {{"internet.example", 3, 0xC000020A, apn_bytes(0x0A)},
                      {"ims.example", 3, 0xC000020B, apn_bytes(0x0B)}};
  state.operators = {{1, 1, "Lakeshore", "Lakeshore Cellular"},
                     {1, 2, "Prairie", "Prairie Wireless"},
                     {999, 70, "Ærø Tel", "Ærø Telefonselskab"},
                     {999, 71, "Südnetz", "Südnetz Mobilfunk"}};
  state.security.subsidy_lock_code = "246810";
  state.carrier = {.bc10 = 1,
                   .bc14 = 1,
                   .active_profile = 0,
                   .bsr_timer = 300,
                   .tot_order = {3, 2, 1},
                   .data_plmn = data_plmn_record(),
                   .roaming_list = {}};
  state.engineering.call_processing = factory_call();
  state.engineering.evdo = factory_session();
  state.pfp = {.first_value = 1, .rat = 8, .remaining_bytes = pfp_bytes()};
  state.features.silent_reboot_answer = {0x00, 0x01};
  state.features.call_end_radio_state = {0x00, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17,
                                         0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F};
  return state;
}

}  // namespace modem
