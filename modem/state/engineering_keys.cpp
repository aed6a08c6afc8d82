// SPDX-License-Identifier: Apache-2.0
#include "modem/state/state_keys.h"

namespace modem {

void describe(Archive& archive, CallProcessingRecord& record) {
  archive.number("frame_error_rate", record.frame_error_rate);
  archive.number("active_pilots", record.active_pilots);
  archive.number("neighbor_pilots", record.neighbor_pilots);
  archive.number("candidate_pilots", record.candidate_pilots);
  archive.number("best_active_pilot", record.best_active_pilot);
  archive.number("best_active_strength", record.best_active_strength);
  archive.number("best_neighbor_pilot", record.best_neighbor_pilot);
  archive.number("best_neighbor_strength", record.best_neighbor_strength);
  archive.number("sid", record.sid);
  archive.number("nid", record.nid);
  archive.number("channel", record.channel);
  archive.number("service_option", record.service_option);
  archive.number("p_rev_in_use", record.p_rev_in_use);
  archive.number("band", record.band);
  archive.number("lna_status", record.lna_status);
  archive.number("state", record.state);
  archive.number("tx_power", record.tx_power);
  archive.number("rssi", record.rssi);
  archive.number("base_id", record.base_id);
  archive.number("base_latitude", record.base_latitude);
  archive.number("base_longitude", record.base_longitude);
  archive.numbers("active_set_pn", record.active_set_pn);
  archive.numbers("active_set_strength", record.active_set_strength);
  archive.numbers("neighbor_set_pn", record.neighbor_set_pn);
  archive.number("calls", record.calls);
  archive.number("dropped_calls", record.dropped_calls);
  archive.number("last_call_indicator", record.last_call_indicator);
  archive.number("rate_reduction", record.rate_reduction);
}

void describe(Archive& archive, EvdoRecord& record) {
  archive.number("channel", record.channel);
  archive.number("uati_color_code", record.uati_color_code);
  archive.number("tx_uati", record.tx_uati);
  archive.number("pilot_pn", record.pilot_pn);
  archive.number("rssi", record.rssi);
  archive.number("rx0_power", record.rx0_power);
  archive.number("rx1_power", record.rx1_power);
  archive.number("measured_packets", record.measured_packets);
  archive.number("error_packets", record.error_packets);
  archive.number("session_state", record.session_state);
  archive.number("at_state", record.at_state);
  archive.number("users", record.users);
  archive.number("hybrid_mode", record.hybrid_mode);
  archive.number("mac_index", record.mac_index);
  archive.numbers("sector_id", record.sector_id);
  archive.number("pilot_energy", record.pilot_energy);
  archive.number("drc_cover", record.drc_cover);
  archive.number("sinr", record.sinr);
  archive.number("an_auth_status", record.an_auth_status);
}

void describe(Archive& archive, Engineering& engineering) {
  archive.section("call_processing", engineering.call_processing);
  archive.section("evdo", engineering.evdo);
  archive.text("call_processing_text", engineering.call_processing_text,
               up_to(kMaxEngineeringText));
  archive.text("evdo_text", engineering.evdo_text, up_to(kMaxEngineeringText));
}

}  // namespace modem
