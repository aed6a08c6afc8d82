// SPDX-License-Identifier: Apache-2.0
#include "protocol/request.h"

namespace protocol {

namespace nv {

constexpr Argument kNvRead[] = {
    {u32("rde-id", 0), kRequired, "element number"},
    {u32("record", 4), value("0"), "record number"},
    {u32("offset", 8), value("0"), "first byte within the item"},
    {u32("length", 12), value("0"), "bytes to read, 0 for the whole item"},
};

constexpr Argument kNvWrite[] = {
    {u32("rde-id", 0), kRequired, "element number"},
    {u32("record", 4), value("0"), "record number"},
    {u32("offset", 8), value("0"), "first byte within the item"},
    {u32("length", 12), length_of("data"), "bytes to write"},
    {item_data(counted(hex("data", 16), "length")), kRequired,
     "the bytes; the modem takes at most 512"},
};

constexpr Argument kItemData[] = {
    {hex("data", 0), kRequired, "the item's bytes; the modem takes at most 512"},
};

constexpr Argument kCheckSpc[] = {
    {personal(code("code", 0)), kRequired, "service programming code", 0, 0,
     Place::code_and_payload},
};

// Four unused bytes follow the bytes read.
constexpr Field kNvDataFields[] = {
    u32("rde-id", 0),
    u32("record", 4),
    u32("offset", 8),
    u32("length", 12),
    item_data(counted(hex("data", 16), "length")),
};
constexpr Layout kNvData = {kNvDataFields};

constexpr Field kItemFields[] = {hex("data", 0, 4), u32("value", 0)};
constexpr Layout kItem = {kItemFields, 4};

constexpr Reply kNvDataReply = {ReplyForm::cdma, &kNvData};
constexpr Reply kItemReply = {ReplyForm::cdma, &kItem};

constexpr Request kRequests[] = {
    {"nv-read", 0x02000016, "read an NV item", {kNvRead}, kNvDataReply},
    {"nv-write", 0x02000015, "write an NV item", {kNvWrite}},
    {"check-spc", 0x0200000A, "check the service programming code", {kCheckSpc}},
    {"read-item-28", 0x02000007, "read NV item 28", {}, kItemReply},
    {"write-item-28", 0x02000008, "write NV item 28", {kItemData}},
    {"read-item-37", 0x0200000F, "read NV item 37", {}, kItemReply},
    {"write-item-37", 0x02000010, "write NV item 37", {kItemData}},
    {"read-item-38", 0x02000017, "read NV item 38", {}, kItemReply},
    {"write-item-38", 0x02000018, "write NV item 38", {kItemData}},
    {"read-item-39", 0x02000019, "read NV item 39", {}, kItemReply},
    {"write-item-39", 0x0200001A, "write NV item 39", {kItemData}},
    {"read-item-10003", 0x0200000D, "read NV item 10003", {}, kItemReply},
    {"write-item-10003", 0x0200000E, "write NV item 10003", {kItemData}},
};

}  // namespace nv

std::span<const Request> nv_requests() { return nv::kRequests; }

}  // namespace protocol
