// SPDX-License-Identifier: Apache-2.0
// The number assignment module: numbers and identities of the CDMA subscription.
#include "protocol/request.h"

namespace protocol {

namespace nam {

constexpr uint16_t kRecordSize = 104;
constexpr uint16_t kPairCount = 20;
constexpr uint16_t kPairSize = 8;
constexpr uint32_t kMax16Bit = 0xFFFF;

constexpr Field kMdn = personal(digits("mdn", 0, 16));
constexpr Field kMin = personal(digits("min", 16, 16));
constexpr Field kSid = u32("sid", 32);
constexpr Field kNid = u32("nid", 36);
constexpr Field kScm = u32("scm", 40);
constexpr Field kImsi1112 = personal(digits("imsi-11-12", 44, 4));
constexpr Field kImsiMcc = personal(digits("imsi-mcc", 48, 4));
constexpr Field kPrimaryA = u32("primary-a", 52);
constexpr Field kPrimaryB = u32("primary-b", 56);
constexpr Field kSecondaryA = u32("secondary-a", 60);
constexpr Field kSecondaryB = u32("secondary-b", 64);
constexpr Field kVocoder = u32("vocoder", 68);
constexpr Field kImsiTMcc = personal(digits("imsi-t-mcc", 72, 4));
constexpr Field kImsiT = personal(digits("imsi-t", 76, 16));
constexpr Field kOverloadClass = u32("overload-class", 92);
constexpr Field kNewSpc = personal(code("new-spc", 96));

// Replies do not contain the new programming code.
constexpr Field kRecordFields[] = {kMdn,        kMin,     kSid,      kNid,      kScm,
                                   kImsi1112,   kImsiMcc, kPrimaryA, kPrimaryB, kSecondaryA,
                                   kSecondaryB, kVocoder, kImsiTMcc, kImsiT,    kOverloadClass};
constexpr Layout kRecord = {kRecordFields, kRecordSize};

constexpr Argument kSetNam[] = {
    {personal(code("spc", 0)), kRequired, "current service programming code", 0, 0, Place::code},
    {kMdn, value(""), "directory number", 0, 15},
    {kMin, value("0000000000"), "mobile identification number", 10, 10},
    {kSid, value("0"), "home system", 0, kMax16Bit},
    {kNid, value("65535"), "home network", 0, kMax16Bit},
    {kScm, value("42"), "station class mark", 0, 255},
    {kImsi1112, value("00"), "IMSI digits 11 and 12", 2, 2},
    {kImsiMcc, value("310"), "IMSI country code", 3, 3},
    {kPrimaryA, value("283"), "primary channel, system A", 0, kMax16Bit},
    {kPrimaryB, value("384"), "primary channel, system B", 0, kMax16Bit},
    {kSecondaryA, value("691"), "secondary channel, system A", 0, kMax16Bit},
    {kSecondaryB, value("777"), "secondary channel, system B", 0, kMax16Bit},
    offering("0 1 2 3 4 5 6", {kVocoder, value("0"), "vocoder code, 0 to 6"}),
    {kImsiTMcc, value("310"), "IMSI_T country code", 3, 3},
    {kImsiT, value("310000000000000"), "IMSI_T", 15, 15},
    {kOverloadClass, value("0"), "access overload class", 0, 255},
    {kNewSpc, same_as("spc"), "new service programming code"},
};

constexpr Field kPairFields[] = {u32("sid", 0), u32("nid", 4)};
constexpr Group kPairGroup = {"pairs", 0, kPairSize, kPairCount, kPairFields};
constexpr Layout kPairs = {{}, kPairCount* kPairSize, &kPairGroup};

constexpr Argument kSetPairs[] = {
    {pairs("pairs", 0), kRequired, "SID/NID,SID/NID,... the rest becomes 0/0", 1, kPairCount},
};

constexpr Reply kRecordReply = {ReplyForm::cdma, &kRecord};
constexpr Reply kPairsReply = {ReplyForm::cdma, &kPairs};

constexpr Request kRequests[] = {
    {"get-nam", 0x02000001, "read the NAM record", {}, kRecordReply},
    {"set-nam", 0x02000002, "write the NAM record", {kSetNam, kRecordSize, true}},
    {"get-sid-nid", 0x02000003, "read the SID/NID pairs", {}, kPairsReply},
    {"set-sid-nid", 0x02000004, "write the SID/NID pairs", {kSetPairs, kPairCount* kPairSize}},
};

}  // namespace nam

std::span<const Request> nam_requests() { return nam::kRequests; }

}  // namespace protocol
