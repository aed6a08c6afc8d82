// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/unsolicited.h"

#include <fmt/format.h>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

constexpr uint32_t kCdmaFormat = 0;
constexpr uint32_t kGenericFormat = 1;
constexpr size_t kCdmaDataOffset = 26;
constexpr size_t kUnsolStatusOffset = 16;

constexpr Field kTextFields[] = {text("text", 0, 22)};
constexpr Layout kText = {kTextFields, 22};
constexpr Field kPfpFields[] = {u16("version", 0), u16("rat", 2), u32("table-index", 4),
                                hex("table", 8, 224)};
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
constexpr Field kUploadFields[] = {u8("kind", 0), hex("data", 1)};
constexpr Layout kUpload = {kUploadFields};
constexpr Field kByteFields[] = {u8("value", 0)};
constexpr Layout kByte = {kByteFields, 1};
constexpr Field kDataFields[] = {hex("data", 0)};
constexpr Layout kData = {kDataFields};
constexpr Layout kEmpty = {};

constexpr UnsolicitedMessage kMessages[] = {
    {kCdmaFormat, 0x00000457, "notify", &kText},
    {kCdmaFormat, 0x0200001D, "pfp", &kPfp},
    {kCdmaFormat, 0x020001B0, "carrier-event", &kValue},
    {kCdmaFormat, 0x020001B1, "lte-error", &kLteError},
    {kGenericFormat, 0x06000200, "generic", &kEmpty},
    {kGenericFormat, 0x04000301, "coverage", &kCoverage},
    {kGenericFormat, 0x04000401, "kpi-record", &kKpi},
    {kGenericFormat, 0x03000B00, "log-upload", &kUpload},
    {kGenericFormat, 0x04000C00, "utils-2", &kData},
    {kGenericFormat, 0x04000E00, "utils-3", &kData},
    {kGenericFormat, 0x04001200, "utils-5", &kData},
    {kGenericFormat, 0x04001300, "utils-6", &kData},
    {kGenericFormat, 0x04001500, "utils-9", &kByte},
};

const UnsolicitedMessage* find_message(uint32_t format, uint32_t id) {
  for (const UnsolicitedMessage& message : kMessages) {
    if (message.format == format && message.id == id) return &message;
  }
  return nullptr;
}

uint32_t header_size(uint32_t format) {
  return format == kCdmaFormat ? kUnsolCdmaHeaderSize : kGenericHeaderSize;
}

void check_frame(DecodedFrame& decoded, uint32_t format) {
  View frame = decoded.frame;
  check_size(decoded, kUnsolOverhead);
  if (format > kGenericFormat) {
    decoded.problems.push_back(fmt::format("unknown header format {}", format));
  } else if (load_le(frame, 4, 4) != header_size(format)) {
    decoded.problems.push_back(fmt::format("the header size is not {}", header_size(format)));
  }
}

}  // namespace

std::span<const UnsolicitedMessage> unsolicited_messages() { return kMessages; }

DecodedFrame decode_unsolicited(View frame) {
  DecodedFrame decoded;
  decoded.frame.assign(frame.begin(), frame.end());
  uint32_t format = load_le(frame, 0, 4);
  uint32_t id = load_le(frame, 8, 4);
  const UnsolicitedMessage* message = find_message(format, id);
  decoded.name = message ? message->name : "";
  decoded.id = fmt::format("0x{:08X}", id);
  decoded.length = load_le(frame, 12, 4);
  if (format == kCdmaFormat) {
    decoded.status = load_le(frame, kUnsolStatusOffset, 4);
    decoded.status_name = status_name(*decoded.status);
  }
  check_frame(decoded, format);
  size_t offset = format == kCdmaFormat ? kCdmaDataOffset : kUnsolHeaderSize;
  decoded.fields = decode_fields(message ? *message->layout : any_data(),
                                 part(frame, offset, decoded.length), decoded.problems);
  if (!message) note_payload(decoded, offset, offset);
  return decoded;
}

}  // namespace qorextctl
