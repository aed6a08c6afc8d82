// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/protocol.h"

#include <fmt/format.h>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

uint32_t header_size(uint32_t format) {
  return format == kUnsolCdmaFormat ? kUnsolCdmaHeaderSize : kGenericHeaderSize;
}

void check_frame(DecodedFrame& decoded, uint32_t format) {
  View frame = decoded.frame;
  check_size(decoded, kUnsolOverhead);
  if (format > kUnsolGenericFormat) {
    decoded.problems.push_back(fmt::format("unknown header format {}", format));
  } else if (load_le(frame, 4, 4) != header_size(format)) {
    decoded.problems.push_back(fmt::format("the header size is not {}", header_size(format)));
  }
}

}  // namespace

DecodedFrame decode_unsolicited(View frame) {
  DecodedFrame decoded;
  decoded.frame.assign(frame.begin(), frame.end());
  uint32_t format = load_le(frame, 0, 4);
  uint32_t id = load_le(frame, 8, 4);
  const UnsolicitedMessage* message = find_unsolicited(format, id);
  decoded.name = message ? message->name : "";
  decoded.id = fmt::format("0x{:08X}", id);
  decoded.length = load_le(frame, 12, 4);
  if (format == kUnsolCdmaFormat) {
    decoded.status = load_le(frame, kUnsolStatusOffset, 4);
    decoded.status_name = status_name(*decoded.status);
  }
  check_frame(decoded, format);
  size_t offset = format == kUnsolCdmaFormat ? kUnsolCdmaDataOffset : kUnsolHeaderSize;
  decoded.fields = decode_fields(message ? *message->layout : any_data(),
                                 part(frame, offset, decoded.length), decoded.problems);
  if (!message) note_payload(decoded, offset, offset);
  return decoded;
}

}  // namespace qorextctl
