// SPDX-License-Identifier: Apache-2.0
// The modem's live engineering data of the CDMA 1x and EVDO links.
#include "protocol/request.h"

namespace protocol {

namespace engineering {

constexpr Field kCallFields[] = {
    u32("fer", 0),
    u32("best-active-pilot", 4),
    u32("best-active-strength", 8),
    u32("best-neighbor-pilot", 12),
    u32("best-neighbor-strength", 16),
    u32("sid", 20),
    u32("nid", 24),
    u32("channel", 28),
    u32("service-option", 32),
    u32("dropped-calls", 36),
    u32("s-call-counter", 40),
    i32("tx-power", 44),
    u32("band", 48),
    u32("active-pilots", 52),
    u32("neighbor-pilots", 56),
    u32("candidate-pilots", 60),
    u32("cp-state", 64),
    u32("last-call-indicator", 68),
    u32("lna-status", 72),
    u32("rssi", 76),
    u32("p-rev-above-5", 84),
    u32("p-rev-in-use", 88),
    u32("base-id", 92),
    list(u32("active-set-pn", 96), 6),
    list(u32("active-set-strength", 120), 6),
    list(u32("neighbor-set-pn", 144), 40),
    i32("base-latitude", 304),
    i32("base-longitude", 308),
    u32("rate-reduction", 312),
};
constexpr Layout kCall = {kCallFields, 316};

constexpr Field kEvdoFields[] = {
    u32("channel", 0),        u32("uati-color-code", 4),
    u32("tx-uati", 8),        u32("pilot-pn", 12),
    u32("rssi", 16),          i32("rx0-power-dbm", 20),
    i32("rx1-power-dbm", 24), u32("measured-packets", 28),
    u32("error-packets", 32), u32("session-state", 36),
    u32("at-state", 40),      u32("users", 48),
    u32("hybrid-mode", 52),   u32("drops", 56),
    u32("mac-index", 60),     list(u32("sector-id", 64), 16),
    i32("pilot-energy", 128), u32("drc-cover", 132),
    u32("sinr", 136),         u32("an-auth-status", 140),
};
constexpr Layout kEvdo = {kEvdoFields, 144};

constexpr Reply kCallReply = {ReplyForm::cdma, &kCall};
constexpr Reply kEvdoReply = {ReplyForm::cdma, &kEvdo};

constexpr Request kRequests[] = {
    {"get-call-processing", 0x02000011, "CDMA 1x link data", {}, kCallReply},
    {"get-evdo", 0x02000012, "EVDO link data", {}, kEvdoReply},
};

}  // namespace engineering

std::span<const Request> engineering_requests() { return engineering::kRequests; }

}  // namespace protocol
