// SPDX-License-Identifier: Apache-2.0
// The carrier's provisioning requests.
#include "protocol/request.h"

namespace protocol {

namespace carrier {

constexpr uint16_t kTotEntries = 15;
constexpr uint16_t kTotSize = 2 + 4 * kTotEntries;
constexpr uint32_t kAkeySize = 26;
constexpr uint32_t kBc10Id = 0x020000B0;

constexpr Argument kStatus[] = {
    offering("1 0", {i32("status", 0), kRequired, "status value"}),
};
constexpr Argument kRoamingList[] = {
    {u32("size", 0), length_of("data"), "bytes in the segment"},
    {counted(hex("data", 4), "size"), kRequired,
     "the segment; the modem takes at most 16384 bytes"},
};
constexpr Argument kProfile[] = {{i32("profile", 0), kRequired, "profile number"}};
constexpr Argument kResetFlag[] = {
    {u8("flag", 0), kAbsent, "reset flag; the daemon passes 255 when it is left out"}};
constexpr Argument kDdtm[] = {
    offering("1 0", {u8("ddtm", 0), kRequired, "preference value"}),
};
constexpr Argument kTimer[] = {{u32("timer", 0), kRequired, "timer value"}};
constexpr Argument kLteOption[] = {{hex("data", 0), kRequired, "the option's bytes"}};
constexpr Argument kTot[] = {
    {u16("count", 0), length_of("entries"), "entries in use"},
    {counted(numbers("entries", 2), "count"), kRequired, "VALUE,VALUE,...", 0, kTotEntries},
};
constexpr Argument kAkey[] = {
    {personal(code("spc", 0)), kRequired, "current service programming code", 0, 0, Place::code},
    {personal(text("akey", 0)), kRequired, "the A-key, 26 characters", kAkeySize, kAkeySize},
};
constexpr Argument kSubsidyLock[] = {
    {personal(code("code", 0)), kRequired, "subsidy-lock code", 0, 0, Place::code},
};

constexpr Field kBandFields[] = {u32("band", 0)};
constexpr Layout kBand = {kBandFields, 4};
constexpr Field kDdtmFields[] = {u32("ddtm", 0)};
constexpr Layout kDdtmValue = {kDdtmFields, 4};
constexpr Field kTimerFields[] = {u32("timer", 0)};
constexpr Layout kTimerValue = {kTimerFields, 4};
constexpr Field kDataFields[] = {hex("data", 0)};
constexpr Layout kData = {kDataFields};
constexpr Field kMobPRevFields[] = {u8("mob-p-rev", 0)};
constexpr Layout kMobPRev = {kMobPRevFields, 4};

// The meaning of the last two values of the LTE channel message is not known.
constexpr Field kLteFields[] = {
    u32("service-state", 0),
    u16("mcc", 4),
    u16("mnc", 6),
    u32("cell-id", 8),
    u8("channel-third-value", 12),
    u8("channel-fourth-value", 13),
    u32("second-channel", 14),
    u32("first-channel", 18),
    i8("rssi", 22),
    i16("rsrp", 23),
    i8("rsrq", 25),
    i32("tx-power", 26),
};
constexpr Layout kLteData = {kLteFields, 30};

constexpr uint16_t kApnCount = 8;
constexpr uint16_t kApnSize = 127;
constexpr Field kApnListFields[] = {u8("count", 0)};
// The modem's entry holds the second value little-endian; the meaning of the values is not known.
constexpr Field kApnFields[] = {
    text("name", 0, 103),
    u32("first-value", 103),
    u32_be("second-value", 107),
    hex("remaining-bytes", 111, 16),
};
constexpr Group kApnGroup = {"apns", 1, kApnSize, kApnCount, kApnFields, "count"};
constexpr Layout kApns = {kApnListFields, 1 + kApnCount* kApnSize, &kApnGroup};

constexpr Field kTotFields[] = {
    u16("count", 0),
    counted(list(u32("entries", 2), kTotEntries), "count"),
};
constexpr Layout kTotOrder = {kTotFields, kTotSize};

constexpr Reply kBandReply = {ReplyForm::cdma, &kBand};
constexpr Reply kBc14Reply = {ReplyForm::cdma, &kBand, kBc10Id};
constexpr Reply kDdtmReply = {ReplyForm::cdma, &kDdtmValue};
constexpr Reply kTimerReply = {ReplyForm::cdma, &kTimerValue};
constexpr Reply kOptionReply = {ReplyForm::cdma, &kData};
constexpr Reply kLteReply = {ReplyForm::cdma, &kLteData};
constexpr Reply kApnReply = {ReplyForm::cdma, &kApns};
constexpr Reply kTotReply = {ReplyForm::cdma, &kTotOrder};
constexpr Reply kMobPRevReply = {ReplyForm::cdma, &kMobPRev};
constexpr Reply kTwice = {ReplyForm::cdma, nullptr, 0, Second::always};
constexpr Reply kTwiceWithPayload = {ReplyForm::cdma, nullptr, 0, Second::with_payload};

constexpr Request kRequests[] = {
    {"get-bc10", kBc10Id, "band class 10 state", {}, kBandReply},
    {"set-bc10", 0x020000B1, "switch band class 10", {kStatus}},
    {"get-bc14", 0x020000B2, "band class 14 state", {}, kBc14Reply},
    {"set-bc14", 0x020000B3, "switch band class 14", {kStatus}},
    {"set-roaming-list", 0x020000B4, "write a roaming list segment", {kRoamingList}},
    {"set-profile", 0x020000B5, "switch the active profile", {kProfile}, kTwiceWithPayload},
    {"factory-reset", 0x020000B6, "reset the modem's settings", {kResetFlag}},
    {"get-ddtm", 0x020000B7, "data dedicated transmission mode", {}, kDdtmReply},
    {"set-ddtm", 0x020000B8, "set the data dedicated transmission mode", {kDdtm}},
    {"get-ddtm-2", 0x020000B9, "get-ddtm by its second id", {}, kDdtmReply},
    {"set-ddtm-2", 0x020000BA, "set-ddtm by its second id", {kDdtm}},
    {"obsolete-bb", 0x020000BB, "obsolete"},
    {"get-bsr-timer", 0x020000BC, "better service reselection timer", {}, kTimerReply},
    {"set-bsr-timer", 0x020000BD, "set the better service reselection timer", {kTimer}},
    {"get-lte-option", 0x020000BE, "read the LTE option item", {}, kOptionReply},
    {"set-lte-option", 0x020000BF, "write the LTE option item", {kLteOption}},
    {"get-lte-data", 0x020000C0, "LTE engineering record", {}, kLteReply},
    {"get-apn", 0x020000C1, "active eHRPD access points", {}, kApnReply},
    {"obsolete-c2", 0x020000C2, "obsolete"},
    {"obsolete-c3", 0x020000C3, "obsolete"},
    {"get-tot", 0x020000C4, "TOT order", {}, kTotReply},
    {"update-tot", 0x020000C5, "update the TOT order", {kTot, kTotSize}},
    {"obsolete-c6", 0x020000C6, "obsolete"},
    {"obsolete-c7", 0x020000C7, "obsolete"},
    {"obsolete-c8", 0x020000C8, "obsolete"},
    {"obsolete-c9", 0x020000C9, "obsolete"},
    {"obsolete-ca", 0x020000CA, "obsolete"},
    {"obsolete-cb", 0x020000CB, "obsolete"},
    {"get-mob-p-rev", 0x02000007, "mobile protocol revision", {}, kMobPRevReply},
    {"verify-subsidy-lock", 0x0200000A, "verify the subsidy-lock code", {kSubsidyLock}},
    {"write-akey", 0x02000013, "write the authentication key", {kAkey}, kTwice},
};

}  // namespace carrier

std::span<const Request> carrier_requests() { return carrier::kRequests; }

}  // namespace protocol
