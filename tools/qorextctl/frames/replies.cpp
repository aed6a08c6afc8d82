// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

void set_status(DecodedFrame& decoded, uint32_t status) {
  decoded.status = status;
  decoded.status_name = status_name(status);
}

// A reply with a failure status may have no data.
void add_fields(DecodedFrame& decoded, const Request* request, View data) {
  bool failed = decoded.status != kSuccess;
  if (failed && data.empty()) return;
  const Layout* layout = request ? request->reply.layout : nullptr;
  bool described = layout && (layout->group || !layout->fields.empty());
  if (request && !described && all_zero(data)) return;  // the six bytes of a code check
  decoded.fields = decode_fields(described ? *layout : any_data(), data, decoded.problems);
}

void decode_cdma(DecodedFrame& decoded, const Request* request, uint32_t id) {
  View frame = decoded.frame;
  uint32_t got = load_le(frame, 0, 4);
  decoded.id = id_text(Family::cdma, got);
  decoded.length = load_le(frame, 4, 4);
  set_status(decoded, load_le(frame, kStatusOffset, 4));
  // A daemon that does not know the request returns the request's id.
  bool other_id = request && request->reply.id != 0 && decoded.status != kNotSupported;
  uint32_t expected = other_id ? request->reply.id : id;
  if (got != expected) {
    decoded.problems.push_back("the reply's id is not " + id_text(Family::cdma, expected));
  }
  check_size(decoded, kCdmaHeaderSize + kCdmaTrailerSize);
  add_fields(decoded, request, part(frame, kCdmaHeaderSize, decoded.length));
  note_personal(decoded, request, kCdmaHeaderSize, kCdmaHeaderSize);
  note_echo(decoded);
}

// Most generic requests report a failure by a single data byte.
void decode_generic_data(DecodedFrame& decoded, const Request* request, View data) {
  bool lone_failure = data.size() == 1 && data[0] == kFailure;
  bool has_status = request && request->reply.form == ReplyForm::generic_status && !data.empty();
  set_status(decoded, lone_failure ? kFailure : has_status ? data[0] : kSuccess);
  if (lone_failure) return;
  add_fields(decoded, request, data);
  note_personal(decoded, request, kGenericHeaderSize, kGenericHeaderSize);
}

void decode_generic(DecodedFrame& decoded, const Request* request, uint32_t id) {
  View frame = decoded.frame;
  decoded.id = id_text(Family::generic, load_be(frame, 1, 3));
  if (id != 0 && load_be(frame, 1, 3) != id) {
    decoded.problems.push_back("the reply's id is not " + id_text(Family::generic, id));
  }
  uint32_t length = load_le(frame, 4, 4);
  // The header repeats that of the request, which may be any bytes.
  if (classify(frame).kind == Classified::Kind::unknown) note_all(decoded);
  if (length == kGenericError) {
    set_status(decoded, kNotSupported);
    return;
  }
  decoded.length = length;
  check_size(decoded, kGenericHeaderSize);
  decode_generic_data(decoded, request, part(frame, kGenericHeaderSize, length));
}

void decode_data_plmn(DecodedFrame& decoded, const Request* request, uint32_t id) {
  decoded.id = id_text(Family::generic, id);
  decoded.length = static_cast<uint32_t>(decoded.frame.size());
  set_status(decoded, all_zero(decoded.frame) ? kFailure : kSuccess);
  add_fields(decoded, request, decoded.frame);
  note_personal(decoded, request, 0, 0);
}

}  // namespace

DecodedFrame decode_reply(const Request* request, ReplyForm form, uint32_t id, View frame) {
  DecodedFrame decoded;
  decoded.name = request ? request->name : "";
  decoded.frame.assign(frame.begin(), frame.end());
  switch (form) {
    case ReplyForm::cdma:
      decode_cdma(decoded, request, id);
      break;
    case ReplyForm::data_plmn:
      if (frame.size() == kDataPlmnSize) {
        decode_data_plmn(decoded, request, id);
        break;
      }
      [[fallthrough]];
    default:
      decode_generic(decoded, request, id);
  }
  return decoded;
}

}  // namespace qorextctl
