#include <fmt/format.h>

#include <algorithm>

#include "decode.h"
#include "frames.h"

namespace qorextctl {

namespace {

constexpr uint32_t kSuccess = 0;
constexpr uint32_t kFailure = 5;
constexpr size_t kStatusOffset = 8;
constexpr Field kAnyField = hex("data", 0);
constexpr Layout kAnyData = {{&kAnyField, 1}};

bool is_zero(View bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

void set_status(DecodedFrame& decoded, uint32_t status) {
  decoded.status = status;
  decoded.status_name = status_name(status);
}

// A reply that reports a failure may come without the data of a success.
void add_fields(DecodedFrame& decoded, const Layout* layout, View data) {
  bool failed = decoded.status != kSuccess;
  if (failed && data.empty()) return;
  bool described = layout && (layout->group || !layout->fields.empty());
  if (!described && is_zero(data)) return;  // such as the six zero bytes of a code check
  decoded.fields = decode_fields(described ? *layout : kAnyData, data, decoded.problems);
}

void check_size(DecodedFrame& decoded, size_t overhead) {
  size_t stated = size_t{decoded.length} + overhead;
  if (decoded.frame.size() == stated) return;
  decoded.problems.push_back(
      fmt::format("the length field says {}, the frame has {} bytes instead of {}", decoded.length,
                  decoded.frame.size(), stated));
}

void decode_cdma(DecodedFrame& decoded, const Request* request, uint32_t id) {
  View frame = decoded.frame;
  uint32_t got = load_le(frame, 0, 4);
  decoded.id = fmt::format("0x{:08X}", got);
  decoded.length = load_le(frame, 4, 4);
  set_status(decoded, load_le(frame, kStatusOffset, 4));
  // Whoever does not know a request sends its own id back.
  bool other_id = request && request->reply.id != 0 && decoded.status != kNotSupported;
  uint32_t expected = other_id ? request->reply.id : id;
  if (got != expected) {
    decoded.problems.push_back(fmt::format("the reply's id is not 0x{:08X}", expected));
  }
  check_size(decoded, kCdmaHeaderSize + kCdmaTrailerSize);
  add_fields(decoded, request ? request->reply.layout : &kAnyData,
             part(frame, kCdmaHeaderSize, decoded.length));
}

// The failure of most generic requests is one data byte without the data of a success.
void decode_generic_data(DecodedFrame& decoded, const Request* request, View data) {
  bool lone_failure = data.size() == 1 && data[0] == kFailure;
  bool has_status = request && request->reply.form == ReplyForm::generic_status && !data.empty();
  set_status(decoded, lone_failure ? kFailure : has_status ? data[0] : kSuccess);
  if (lone_failure) return;
  add_fields(decoded, request ? request->reply.layout : &kAnyData, data);
}

void decode_generic(DecodedFrame& decoded, const Request* request, uint32_t id) {
  View frame = decoded.frame;
  decoded.id = fmt::format("0x{:06X}", load_be(frame, 1, 3));
  if (id != 0 && load_be(frame, 1, 3) != id) {
    decoded.problems.push_back(fmt::format("the reply's id is not 0x{:06X}", id));
  }
  uint32_t length = load_le(frame, 4, 4);
  if (length == kGenericError) {
    set_status(decoded, kNotSupported);
    return;
  }
  decoded.length = length;
  check_size(decoded, kGenericHeaderSize);
  decode_generic_data(decoded, request, part(frame, kGenericHeaderSize, length));
}

void decode_data_plmn(DecodedFrame& decoded, const Request* request, uint32_t id) {
  decoded.id = fmt::format("0x{:06X}", id);
  decoded.length = static_cast<uint32_t>(decoded.frame.size());
  set_status(decoded, is_zero(decoded.frame) ? kFailure : kSuccess);
  add_fields(decoded, request ? request->reply.layout : &kAnyData, decoded.frame);
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
