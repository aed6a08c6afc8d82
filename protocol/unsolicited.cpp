// SPDX-License-Identifier: Apache-2.0
#include "protocol/unsolicited.h"

#include "protocol/frame.h"

namespace protocol {

namespace unsolicited {

constexpr Field kTextFields[] = {text("text", 0, 22)};
constexpr Layout kText = {kTextFields, 22};
constexpr Field kPfpFields[] = {u16("first-value", 0), u16("rat", 2), u32("table-index", 4),
                                hex("remaining-bytes", 8, 224)};
constexpr Layout kPfp = {kPfpFields, 232};
constexpr Field kValueFields[] = {u32("value", 0)};
constexpr Layout kValue = {kValueFields, 4};
constexpr Field kLteErrorFields[] = {u32("first-value", 0), u8("second-value", 4),
                                     u32("third-value", 5), text("text", 9, 103)};
constexpr Layout kLteError = {kLteErrorFields, 112};
constexpr Field kCoverageFields[] = {hex("report", 0, 32)};
constexpr Layout kCoverage = {kCoverageFields, 32};
constexpr Field kKpiFields[] = {u32("header", 0), hex("data", 4)};
constexpr Layout kKpi = {kKpiFields};
constexpr Field kUploadFields[] = {u8("first-value", 0), hex("data", 1)};
constexpr Layout kUpload = {kUploadFields};
constexpr Field kByteFields[] = {u8("value", 0)};
constexpr Layout kByte = {kByteFields, 1};
constexpr Field kDataFields[] = {hex("data", 0)};
constexpr Layout kData = {kDataFields};
constexpr Layout kEmpty = {};

constexpr UnsolicitedMessage kMessages[] = {
    {kUnsolCdmaFormat, 0x00000457, "notify", &kText},
    {kUnsolCdmaFormat, 0x0200001D, "pfp", &kPfp},
    {kUnsolCdmaFormat, 0x020001B0, "carrier-event", &kValue},
    {kUnsolCdmaFormat, 0x020001B1, "lte-error", &kLteError},
    {kUnsolGenericFormat, 0x06000200, "generic", &kEmpty},
    {kUnsolGenericFormat, 0x04000301, "coverage", &kCoverage},
    {kUnsolGenericFormat, 0x04000401, "kpi-record", &kKpi},
    {kUnsolGenericFormat, 0x03000B00, "log-upload", &kUpload},
    {kUnsolGenericFormat, 0x04000C00, "utils-2", &kData},
    {kUnsolGenericFormat, 0x04000E00, "utils-3", &kData},
    {kUnsolGenericFormat, 0x04001200, "utils-5", &kData},
    {kUnsolGenericFormat, 0x04001300, "utils-6", &kData},
    {kUnsolGenericFormat, 0x04001500, "utils-9", &kByte},
};

}  // namespace unsolicited

std::span<const UnsolicitedMessage> unsolicited_messages() { return unsolicited::kMessages; }

const UnsolicitedMessage* find_unsolicited(uint32_t format, uint32_t id) {
  for (const UnsolicitedMessage& message : unsolicited_messages()) {
    if (message.format == format && message.id == id) return &message;
  }
  return nullptr;
}

}  // namespace protocol
