// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/frame_kind.h"

#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {

namespace {

using Kind = FrameKind;

bool is_unsolicited(View frame) {
  if (frame.size() < kUnsolOverhead) return false;
  bool cdma = load_le(frame, 0, 4) == 0 && load_le(frame, 4, 4) == kUnsolCdmaHeaderSize;
  bool generic = load_le(frame, 0, 4) == 1 && load_le(frame, 4, 4) == kGenericHeaderSize;
  return (cdma || generic) && unsolicited_size(frame) == frame.size();
}

bool is_generic_error(View frame) {
  return frame.size() == kGenericHeaderSize && load_le(frame, 4, 4) == kGenericError;
}

std::optional<Kind> recognise_cdma(View frame) {
  size_t length = load_le(frame, 4, 4);
  bool is_reply = frame.size() == length + kCdmaHeaderSize + kCdmaTrailerSize;
  return is_reply ? Kind::reply : Kind::request;
}

std::optional<Kind> recognise_generic(View frame, uint32_t id) {
  size_t data = frame.size() - kGenericHeaderSize;
  if (data == load_be(frame, 4, 4)) return Kind::request;
  if (data == load_le(frame, 4, 4)) return Kind::reply;
  if (frame.size() == kDataPlmnSize) return Kind::reply;
  return find_request(Family::generic, id) ? std::optional(Kind::request) : std::nullopt;
}

DecodedFrame decode_any_reply(View frame) {
  Classified classified = classify(frame);
  if (classified.kind == Classified::Kind::cdma) {
    const Request* row = find_request(Family::cdma, classified.id);
    return decode_reply(row, ReplyForm::cdma, classified.id, frame);
  }
  if (frame.size() == kDataPlmnSize) {
    const Request* row = find_request("data-plmn");
    return decode_reply(row, row->reply.form, row->id, frame);
  }
  const Request* row = find_request(Family::generic, load_be(frame, 1, 3));
  return decode_reply(row, row ? row->reply.form : ReplyForm::generic, 0, frame);
}

}  // namespace

const char* name_of(FrameKind kind) {
  switch (kind) {
    case Kind::request:
      return "request";
    case Kind::reply:
      return "reply";
    default:
      return "unsolicited";
  }
}

std::optional<FrameKind> recognise(View frame) {
  if (is_unsolicited(frame)) return Kind::unsolicited;
  if (is_generic_error(frame)) return Kind::reply;
  Classified classified = classify(frame);
  switch (classified.kind) {
    case Classified::Kind::cdma:
      return recognise_cdma(frame);
    case Classified::Kind::generic:
      return recognise_generic(frame, classified.id);
    default:
      return frame.size() == kDataPlmnSize ? std::optional(Kind::reply) : std::nullopt;
  }
}

DecodedFrame decode_as(FrameKind kind, View frame) {
  switch (kind) {
    case Kind::request:
      return decode_request(frame);
    case Kind::reply:
      return decode_any_reply(frame);
    default:
      return decode_unsolicited(frame);
  }
}

}  // namespace qorextctl
