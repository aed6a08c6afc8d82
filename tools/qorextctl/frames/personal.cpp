// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/personal.h"

#include <algorithm>

#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {

namespace {

constexpr Field kAnyDataField = personal(hex("data", 0));
constexpr Layout kAnyData = {{&kAnyDataField, 1}};

void note_unless_zero(DecodedFrame& decoded, ByteRange range) {
  if (!all_zero(part(decoded.frame, range.offset, range.size))) decoded.personal.push_back(range);
}

bool is_closed(const Field& field) { return field.privacy != Privacy::open; }

void make_personal(Item& item) {
  item.is_personal = true;
  for (Items& record : item.records) {
    for (Item& inner : record) make_personal(inner);
  }
}

void mask_values(Items& items) {
  for (Item& item : items) {
    if (item.is_personal) item.value = kMasked;
    for (Items& record : item.records) mask_values(record);
  }
}

}  // namespace

bool takes_personal(const Request& request) {
  const auto& arguments = request.payload.arguments;
  return std::any_of(arguments.begin(), arguments.end(),
                     [](const Argument& argument) { return is_closed(argument.field); });
}

bool touches_personal(const Request& request) {
  const auto& arguments = request.payload.arguments;
  bool asks = std::any_of(arguments.begin(), arguments.end(), [&](const Argument& argument) {
    return argument.place != Place::code && is_closed(argument.field);
  });
  if (asks || !request.reply.layout) return asks;
  const auto& fields = request.reply.layout->fields;
  return std::any_of(fields.begin(), fields.end(), is_closed);
}

const Layout& any_data() { return kAnyData; }

void note_personal(DecodedFrame& decoded, const Request* request, size_t data_offset,
                   size_t header_size) {
  for (const Item& item : decoded.fields) {
    if (!item.is_personal) continue;
    decoded.personal.push_back({data_offset + item.place.offset, item.place.size});
  }
  if (decoded.problems.empty() || (request && !touches_personal(*request))) return;
  note_payload(decoded, data_offset, header_size);
}

void note_payload(DecodedFrame& decoded, size_t data_offset, size_t header_size) {
  for (Item& item : decoded.fields) {
    if (data_offset + item.place.offset >= header_size) make_personal(item);
  }
  decoded.personal.push_back({header_size, decoded.frame.size()});
}

void note_all(DecodedFrame& decoded) {
  note_payload(decoded, 0, 0);
  decoded.is_id_personal = true;
}

void note_code(DecodedFrame& decoded) { note_unless_zero(decoded, {kCodeOffset, kCodeSize}); }

void note_echo(DecodedFrame& decoded) {
  note_code(decoded);
  if (decoded.length == 0) note_unless_zero(decoded, {kCdmaHeaderSize, kCdmaTrailerSize});
}

void mask(DecodedFrame& decoded) {
  mask_values(decoded.fields);
  if (decoded.is_id_personal) decoded.id = kMasked;
  for (ByteRange range : decoded.personal) {
    size_t size = part(decoded.frame, range.offset, range.size).size();
    std::fill_n(decoded.frame.begin() + static_cast<ptrdiff_t>(size == 0 ? 0 : range.offset), size,
                uint8_t{0});
  }
  decoded.masked = true;
}

std::string hex_of(const DecodedFrame& decoded) {
  std::string text = to_hex(decoded.frame);
  if (!decoded.masked) return text;
  for (ByteRange range : decoded.personal) {
    size_t size = part(decoded.frame, range.offset, range.size).size();
    if (size != 0) text.replace(2 * range.offset, 2 * size, masked_hex(size));
  }
  return text;
}

std::string masked_hex(size_t bytes) {
  std::string text;
  for (size_t i = 0; i < bytes; ++i) text += kMaskedByte;
  return text;
}

}  // namespace qorextctl
