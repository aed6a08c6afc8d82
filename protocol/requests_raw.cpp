// SPDX-License-Identifier: Apache-2.0
// Requests by number, for ids that have no row of their own and for payloads that no row allows.
// What their bytes hold is not known, so they count as personal.
#include "protocol/request.h"

namespace protocol {

namespace raw {

constexpr uint32_t kMax24Bit = 0xFFFFFF;

constexpr Argument kGeneric[] = {
    {u32("id", 0), kRequired, "message id", 0, kMax24Bit, Place::id},
    {u8("type", 0), value("1"), "header type", 0, 0, Place::type},
    {personal(hex("data", 0)), value(""), "payload"},
};

constexpr Argument kCdma[] = {
    {u32("id", 0), kRequired, "message id", 0, 0, Place::id},
    {u32("status", 0), value("0"), "the header's status word", 0, 0, Place::status},
    {personal(code("code", 0)), kAbsent, "the header's code field", 0, 0, Place::code},
    {personal(hex("data", 0)), value(""), "payload"},
};

constexpr Field kDataFields[] = {personal(hex("data", 0))};
constexpr Layout kData = {kDataFields};

constexpr Request kRequests[] = {
    {"generic", 0, "any generic request", {kGeneric}, {ReplyForm::generic, &kData}},
    {"cdma", kCdmaIds, "any CDMA-hook request", {kCdma}, {ReplyForm::cdma, &kData}},
};

}  // namespace raw

std::span<const Request> raw_requests() { return raw::kRequests; }

}  // namespace protocol
