// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/frames.h"

#include <algorithm>

namespace qorextctl {

namespace {

constexpr uint32_t kCdmaFamily = 2;   // the value of bytes 1 to 3 of each CDMA-hook request
constexpr uint8_t kFirstBadType = 3;  // generic requests have a lower header type

Bytes build_generic(const RequestDraft& draft) {
  Bytes frame{draft.type};
  append_be(frame, draft.id, 3);
  append_be(frame, static_cast<uint32_t>(draft.payload.size()), 4);
  return frame;
}

Bytes build_cdma(const RequestDraft& draft) {
  Bytes frame;
  append_le(frame, draft.id, 4);
  append_le(frame, static_cast<uint32_t>(draft.payload.size()), 4);
  append_le(frame, draft.status, 4);
  frame.insert(frame.end(), draft.code.begin(), draft.code.end());
  return frame;
}

size_t plausible(size_t size, View bytes) { return size > kMaxFrameBytes ? bytes.size() : size; }

bool answered_twice(const Request& request, View bytes) {
  if (request.reply.second != Second::with_payload) return request.reply.second == Second::always;
  return load_le(bytes, 4, 4) != 0;
}

bool any_id(const Request* named) { return !named || named->id == 0 || named->id == kCdmaIds; }

}  // namespace

Bytes build(const RequestDraft& draft) {
  Bytes frame = draft.family == Family::generic ? build_generic(draft) : build_cdma(draft);
  frame.insert(frame.end(), draft.payload.begin(), draft.payload.end());
  return frame;
}

Classified classify(View request) {
  if (request.size() < kGenericHeaderSize) return {Classified::Kind::unknown, 0};
  uint32_t id = load_be(request, 1, 3);
  if (id == kCdmaFamily) return {Classified::Kind::cdma, load_le(request, 0, 4)};
  if (request[0] < kFirstBadType) return {Classified::Kind::generic, id};
  return {Classified::Kind::unknown, 0};
}

std::optional<size_t> reply_size(View bytes, ReplyForm form) {
  if (bytes.size() < kGenericHeaderSize) return std::nullopt;
  uint32_t length = load_le(bytes, kLengthOffset, 4);
  if (form == ReplyForm::cdma) {
    return plausible(size_t{length} + kCdmaHeaderSize + kCdmaTrailerSize, bytes);
  }
  if (length == kGenericError) return kGenericHeaderSize;
  if (form == ReplyForm::data_plmn) return kDataPlmnSize;
  return plausible(size_t{length} + kGenericHeaderSize, bytes);
}

std::optional<size_t> unsolicited_size(View bytes) {
  if (bytes.size() < kUnsolHeaderSize) return std::nullopt;
  return plausible(size_t{load_le(bytes, kUnsolLengthOffset, 4)} + kUnsolOverhead, bytes);
}

// Removes what has been taken when it is the larger part, so each byte moves at most twice.
void FrameBuffer::append(View bytes) {
  if (start_ > bytes_.size() / 2) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(start_));
    start_ = 0;
  }
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

Bytes FrameBuffer::take_bytes(size_t size) {
  View taken = pending().first(size);
  Bytes frame(taken.begin(), taken.end());
  start_ += size;
  if (start_ == bytes_.size()) {
    bytes_.clear();
    start_ = 0;
  }
  return frame;
}

Expected expect_reply(View request, const Request* named) {
  Classified classified = classify(request);
  if (classified.kind == Classified::Kind::unknown) return {nullptr, ReplyForm::generic, 0, 1};
  bool cdma = classified.kind == Classified::Kind::cdma;
  if (any_id(named)) named = find_request(cdma ? Family::cdma : Family::generic, classified.id);
  if (!named) return {nullptr, cdma ? ReplyForm::cdma : ReplyForm::generic, classified.id, 1};
  return {named, named->reply.form, classified.id, answered_twice(*named, request) ? 2 : 1};
}

}  // namespace qorextctl
