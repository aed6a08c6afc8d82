// SPDX-License-Identifier: Apache-2.0
#include "protocol/engineering.h"

#include <type_traits>

namespace protocol {

namespace engineering_record {

template <class Number>
constexpr Type type_of() {
  switch (sizeof(Number)) {
    case 1:
      return std::is_signed_v<Number> ? Type::i8 : Type::u8;
    case 2:
      return std::is_signed_v<Number> ? Type::i16 : Type::u16;
    default:
      return std::is_signed_v<Number> ? Type::i32 : Type::u32;
  }
}

// A number, or an array of numbers.
template <class Member>
constexpr Field member(const char* name, size_t offset) {
  using Number = std::remove_extent_t<Member>;
  Field field = {name, type_of<Number>(), static_cast<uint16_t>(offset)};
  return list(field, sizeof(Member) / sizeof(Number));
}

#define CALL(name, of) \
  member<decltype(CallProcessingRecord::of)>(name, offsetof(CallProcessingRecord, of))
#define EVDO(name, of) member<decltype(EvdoRecord::of)>(name, offsetof(EvdoRecord, of))

constexpr Field kCallFields[] = {
    CALL("fer", frame_error_rate),
    CALL("active-pilots", active_pilots),
    CALL("neighbor-pilots", neighbor_pilots),
    CALL("candidate-pilots", candidate_pilots),
    CALL("best-active-pilot", best_active_pilot),
    CALL("best-active-strength", best_active_strength),
    CALL("best-neighbor-pilot", best_neighbor_pilot),
    CALL("best-neighbor-strength", best_neighbor_strength),
    CALL("sid", sid),
    CALL("nid", nid),
    CALL("channel", channel),
    CALL("service-option", service_option),
    CALL("p-rev-in-use", p_rev_in_use),
    CALL("band", band),
    CALL("lna-status", lna_status),
    CALL("cp-state", state),
    CALL("tx-power", tx_power),
    CALL("rssi", rssi),
    CALL("base-id", base_id),
    CALL("base-latitude", base_latitude),
    CALL("base-longitude", base_longitude),
    CALL("active-set-pn", active_set_pn),
    CALL("active-set-strength", active_set_strength),
    CALL("neighbor-set-pn", neighbor_set_pn),
    CALL("s-call-counter", s_call_counter),
    CALL("dropped-calls", dropped_calls),
    CALL("last-call-indicator", last_call_indicator),
    CALL("rate-reduction", rate_reduction),
};
constexpr Layout kCall = {kCallFields, sizeof(CallProcessingRecord)};

constexpr Field kEvdoFields[] = {
    EVDO("channel", channel),
    EVDO("uati-color-code", uati_color_code),
    EVDO("tx-uati", tx_uati),
    EVDO("pilot-pn", pilot_pn),
    u16("rssi", offsetof(EvdoRecord, rssi)),  // the reply does not extend its sign either
    EVDO("rx0-power-dbm", rx0_power),
    EVDO("rx1-power-dbm", rx1_power),
    EVDO("measured-packets", measured_packets),
    EVDO("error-packets", error_packets),
    EVDO("session-state", session_state),
    EVDO("at-state", at_state),
    EVDO("users", users),
    EVDO("hybrid-mode", hybrid_mode),
    EVDO("mac-index", mac_index),
    EVDO("sector-id", sector_id),
    EVDO("pilot-energy", pilot_energy),
    EVDO("drc-cover", drc_cover),
    EVDO("sinr", sinr),
    EVDO("an-auth-status", an_auth_status),
};
constexpr Layout kEvdo = {kEvdoFields, sizeof(EvdoRecord)};

#undef CALL
#undef EVDO

}  // namespace engineering_record

const Layout& call_processing_record() { return engineering_record::kCall; }
const Layout& evdo_record() { return engineering_record::kEvdo; }

}  // namespace protocol
