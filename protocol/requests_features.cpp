// SPDX-License-Identifier: Apache-2.0
// The modem's features. All are generic requests but the PFP table and the utility message.
#include "protocol/frame.h"
#include "protocol/request.h"

namespace protocol {

namespace feature {

constexpr uint16_t kUtilsDataSize = 256;
constexpr uint32_t kUtilsSize = 8 + kUtilsDataSize;
constexpr uint32_t kMaxMcc = 999;

constexpr Argument kFilter[] = {{u8("filter", 0), kRequired, "filter setting"}};
constexpr Argument kByte[] = {{u8("value", 0), value("0"), "byte passed to the modem"}};
constexpr Argument kCoverage[] = {
    {string("text", 0), value(""), "text; the daemon passes on 255 bytes with its NUL"},
};
constexpr Argument kCoverageMode[] = {
    {u8("mode", 0), kRequired, "coverage mode"},
    {string("text", 1), value(""), "text; the daemon passes on 254 bytes with its NUL"},
};
constexpr Argument kOperator[] = {
    {u16("mcc", 0), kRequired, "mobile country code", 0, kMaxMcc},
    {u16("mnc", 2), kRequired, "mobile network code", 0, kMaxMcc},
};
constexpr Argument kTune[] = {
    {hex("data", 0), kRequired, "tuning setting; the daemon passes on 24 bytes"},
};
constexpr Argument kUtils[] = {
    {u32("type", 0), kRequired, "utility type"},
    {u32("length", 4), length_of("data"), "bytes in use; with 0 nothing is sent to the modem"},
    {personal(counted(hex("data", 8), "length")), value(""), "the modem's data", 0, kUtilsDataSize},
};

constexpr Field kDataFields[] = {hex("data", 0)};
constexpr Layout kData = {kDataFields};
constexpr Field kUtilsFields[] = {personal(hex("data", 0))};
constexpr Layout kUtilsData = {kUtilsFields};
constexpr Field kResultFields[] = {u8("result", 0)};
constexpr Layout kResult = {kResultFields, 1};
constexpr Field kRadioStateFields[] = {u8("result", 0), hex("state", 1, 16)};
constexpr Layout kRadioState = {kRadioStateFields, 17};
constexpr Field kNameFields[] = {text("name", 0)};
constexpr Layout kName = {kNameFields};
constexpr Field kRecordFields[] = {hex("record", 0)};
constexpr Layout kPlmnRecord = {kRecordFields, kDataPlmnSize};

constexpr Reply kStatusReply = {ReplyForm::generic_status, &kResult};
constexpr Reply kStateReply = {ReplyForm::generic_status, &kRadioState};
constexpr Reply kDataReply = {ReplyForm::generic, &kData};
constexpr Reply kNameReply = {ReplyForm::generic, &kName};
constexpr Reply kPlmnReply = {ReplyForm::data_plmn, &kPlmnRecord};
constexpr Reply kUtilsReply = {ReplyForm::cdma, &kUtilsData};

constexpr Request kRequests[] = {
    {"silent-reboot", 0x50019, "prepare a silent reboot", {}, kDataReply},
    {"sysinfo-filter", 0x5001E, "filter system information", {kFilter}, kStatusReply},
    {"coverage", 0x50020, "signal coverage, mode 0", {kCoverage}, kStatusReply},
    {"coverage-mode", 0x50029, "signal coverage, any mode", {kCoverageMode}, kStatusReply},
    {"tune", 0x5002A, "tune the antenna", {kTune}, kDataReply},
    {"call-end-radio-state", 0x50505, "radio state at a call's end", {kByte}, kStateReply},
    {"data-plmn", 0x60001, "data network information", {}, kPlmnReply},
    {"operator-name", 0xA0006, "short name of a network", {kOperator}, kNameReply},
    {"pfp", 0x0200001C, "ask for the PFP table, which comes unsolicited"},
    {"utils", 0x0200001E, "any utility request", {kUtils, kUtilsSize}, kUtilsReply},
};

}  // namespace feature

std::span<const Request> feature_requests() { return feature::kRequests; }

}  // namespace protocol
