// SPDX-License-Identifier: Apache-2.0
#include "modem/state/state_keys.h"

#include <array>

#include "modem/state/gsm_alphabet.h"
#include "modem/state/nam.h"

namespace modem {
namespace {

constexpr size_t kMaxItems = 4096;
constexpr size_t kMaxOperators = 256;
constexpr size_t kMaxText = 255;
constexpr size_t kMaxPlmnDigits = 999;
constexpr size_t kApnRemainingSize = 16;

struct NvItem {
  uint32_t rde_id = 0;
  uint32_t record = 0;
  Bytes data;
  bool is_absent = false;
};

void describe(Archive& archive, NvItem& item) {
  archive.require(archive.number("rde_id", item.rde_id), "rde_id");
  archive.number("record", item.record);
  archive.hex("data", item.data, up_to(kMaxItemSize), Privacy::personal);
  if (archive.is_reading() || archive.is_listing()) archive.flag("absent", item.is_absent);
}

void describe_nv(Archive& archive, NvStore& nv) {
  std::vector<NvItem> items;
  if (!archive.is_reading() && !archive.is_listing()) {
    for (const auto& [key, data] : nv.items())
      items.push_back({key.rde_id, key.record, data, false});
  }
  archive.list("nv", items, kMaxItems);
  for (const NvItem& item : items) {
    NvKey key{item.rde_id, item.record};
    item.is_absent ? nv.erase(key) : nv.put(key, item.data);
  }
}

void describe_name(Archive& archive, const char* key, std::string& name) {
  archive.text(key, name, up_to(kMaxText));
  auto encoded = encode_gsm(name);
  if (!encoded) archive.refuse(key, "has a character that is not in the GSM alphabet");
  if (encoded->size() > kMaxOperatorName) archive.refuse(key, "has more than 64 characters");
}

}  // namespace

static void describe(Archive& archive, Nam& nam) {
  archive.digits("mdn", nam.mdn, up_to(kMdnDigits), Privacy::personal);
  archive.digits("min", nam.min, exactly(10), Privacy::personal);
  archive.digits("imsi_mcc", nam.imsi_mcc, exactly(3), Privacy::personal);
  archive.digits("imsi_11_12", nam.imsi_11_12, exactly(2), Privacy::personal);
  archive.digits("imsi_t", nam.imsi_t, exactly(15), Privacy::personal);
  archive.number("home_sid", nam.home_sid);
  archive.number("home_nid", nam.home_nid);
  archive.number("scm", nam.scm);
  archive.number("primary_channel_a", nam.primary_channel_a);
  archive.number("primary_channel_b", nam.primary_channel_b);
  archive.number("secondary_channel_a", nam.secondary_channel_a);
  archive.number("secondary_channel_b", nam.secondary_channel_b);
  archive.number("vocoder", nam.vocoder);
  archive.number("overload_class", nam.overload_class);
}

static void describe(Archive& archive, Settings& settings) {
  archive.digits("spc", settings.spc, exactly(kSpcSize), Privacy::personal);
  archive.number("mob_p_rev", settings.mob_p_rev);
  archive.number("lte_option", settings.lte_option);
  archive.number("ddtm", settings.ddtm);
  archive.number("imei_sv", settings.imei_sv);
  archive.number("lte_bc_config", settings.lte_bc_config);
  archive.text("fsg_version", settings.fsg_version, up_to(kMaxText));
  archive.text("flex_version", settings.flex_version, up_to(kMaxText));
}

static void describe(Archive& archive, LteCell& cell) {
  archive.number("service_state", cell.service_state, kNoService, kFullService);
  archive.number("mcc", cell.mcc, 0, kMaxPlmnDigits);
  archive.number("mnc", cell.mnc, 0, kMaxPlmnDigits);
  archive.text("network_description", cell.network_description, up_to(kMaxText));
  archive.number("cell_id", cell.cell_id);
  archive.number("first_channel", cell.first_channel);
  archive.number("second_channel", cell.second_channel);
  archive.number("channel_third_value", cell.channel_third_value);
  archive.number("channel_fourth_value", cell.channel_fourth_value);
  archive.number("rssi", cell.rssi);
  archive.number("rsrq", cell.rsrq);
  archive.number("rsrp", cell.rsrp);
  archive.number("snr", cell.snr);
  archive.number("in_traffic", cell.in_traffic, 0, 1);
  archive.number("tx_power", cell.tx_power);
}

static void describe(Archive& archive, Apn& apn) {
  apn.remaining_bytes.resize(kApnRemainingSize);
  archive.text("name", apn.name, up_to(kApnNameSize));
  archive.number("first_value", apn.first_value);
  archive.number("second_value", apn.second_value);
  archive.hex("remaining_bytes", apn.remaining_bytes, up_to(kApnRemainingSize));
  apn.remaining_bytes.resize(kApnRemainingSize);
}

static void describe(Archive& archive, Operator& entry) {
  archive.number("mcc", entry.mcc, 0, kMaxPlmnDigits);
  archive.number("mnc", entry.mnc, 0, kMaxPlmnDigits);
  describe_name(archive, "short_name", entry.short_name);
  describe_name(archive, "long_name", entry.long_name);
}

static void describe(Archive& archive, Security& security) {
  archive.text("subsidy_lock_code", security.subsidy_lock_code, exactly(kSpcSize),
               Privacy::personal);
  archive.text("akey", security.akey, up_to(kAkeySize), Privacy::personal);
}

static void describe(Archive& archive, RoamingList& list) {
  archive.number("segments", list.segments);
  archive.hex("last_segment", list.last_segment, up_to(kMaxRoamingSegment));
}

static void describe(Archive& archive, Carrier& carrier) {
  archive.number("bc10", carrier.bc10);
  archive.number("bc14", carrier.bc14);
  archive.number("active_profile", carrier.active_profile);
  archive.number("bsr_timer", carrier.bsr_timer);
  archive.numbers("tot_order", carrier.tot_order, kTotOrderEntries);
  archive.hex("data_plmn", carrier.data_plmn, up_to(kDataPlmnSize));
  archive.section("roaming_list", carrier.roaming_list);
}

static void describe(Archive& archive, protocol::CallProcessingRecord& record) {
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
  archive.number("s_call_counter", record.s_call_counter);
  archive.number("dropped_calls", record.dropped_calls);
  archive.number("last_call_indicator", record.last_call_indicator);
  archive.number("rate_reduction", record.rate_reduction);
}

static void describe(Archive& archive, protocol::EvdoRecord& record) {
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

static void describe(Archive& archive, Engineering& engineering) {
  archive.section("call_processing", engineering.call_processing);
  archive.section("evdo", engineering.evdo);
  archive.text("call_processing_text", engineering.call_processing_text,
               up_to(kMaxEngineeringText));
  archive.text("evdo_text", engineering.evdo_text, up_to(kMaxEngineeringText));
}

static void describe(Archive& archive, Pfp& pfp) {
  archive.number("first_value", pfp.first_value);
  archive.number("rat", pfp.rat);
  archive.hex("remaining_bytes", pfp.remaining_bytes, up_to(kPfpRemainingSize));
}

static void describe(Archive& archive, Features& features) {
  archive.hex("tuner", features.tuner, up_to(kTunerSize));
  archive.hex("silent_reboot_answer", features.silent_reboot_answer, up_to(kMaxUtilsAnswer));
  archive.hex("auto_verify", features.auto_verify, up_to(kMaxUtilsData), Privacy::personal);
  archive.number("system_info_filter", features.system_info_filter);
  archive.number("coverage_mode", features.coverage_mode);
  archive.text("coverage_text", features.coverage_text, up_to(kMaxUtilsData));
  archive.hex("call_end_radio_state", features.call_end_radio_state, up_to(kMaxUtilsAnswer));
  archive.numbers("hob_states", features.hob_states, kMaxHobStates);
}

void describe(Archive& archive, State& state) {
  Nam nam = load_nam(state.nv);
  Settings settings = load_settings(state.nv);
  bool has_nam = archive.section("nam", nam);
  bool has_settings = archive.section("settings", settings);
  if (archive.is_reading() && has_nam) store_nam(state.nv, nam);
  if (archive.is_reading() && has_settings) store_settings(state.nv, settings);
  describe_nv(archive, state.nv);

  archive.section("lte", state.lte);
  archive.list("ehrpd_apns", state.ehrpd_apns, kMaxApns);
  archive.list("operators", state.operators, kMaxOperators);
  archive.section("security", state.security);
  archive.section("carrier", state.carrier);
  archive.section("engineering", state.engineering);
  archive.section("pfp", state.pfp);
  archive.section("features", state.features);
}

const std::vector<Key>& state_keys() {
  static const std::vector<Key> keys = [] {
    State state = factory_state();
    return Archive::keys_of(state);
  }();
  return keys;
}

}  // namespace modem
