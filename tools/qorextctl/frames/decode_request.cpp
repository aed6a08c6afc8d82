// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

// The payload sizes that a row allows.
struct Sizes {
  size_t min;
  size_t max;
};

constexpr size_t kNoBound = std::numeric_limits<size_t>::max();

bool in_payload(const Argument& argument) {
  return argument.place == Place::payload || argument.place == Place::code_and_payload;
}

size_t size_of(const Field& field) {
  size_t width = width_of(field.type);
  return width != 0 ? width : field.size;
}

Sizes sizes_of(const Request& request) {
  Sizes sizes{request.payload.size, request.payload.size};
  for (const Argument& argument : request.payload.arguments) {
    if (!in_payload(argument)) continue;
    size_t end = argument.field.offset + size_of(argument.field);
    if (is_required(argument)) sizes.min = std::max(sizes.min, end);
    sizes.max = size_of(argument.field) == 0 ? kNoBound : std::max(sizes.max, end);
  }
  if (request.payload.size != 0) sizes.max = request.payload.size;
  return sizes;
}

bool fits(const Request& request, size_t size) {
  Sizes sizes = sizes_of(request);
  return size >= sizes.min && size <= sizes.max;
}

// The first row with this id that fits, or else the first with this id.
const Request* row_for(Family family, uint32_t id, size_t payload_size) {
  for (const Request& request : catalogue()) {
    bool same = family_of(request) == family && request.id == id;
    if (same && fits(request, payload_size)) return &request;
  }
  return find_request(family, id);
}

// The row for any request of the family.
const Request& any_row(Family family) {
  return *find_request(family, family == Family::cdma ? kCdmaIds : 0);
}

size_t header_size(Family family) {
  return family == Family::cdma ? kCdmaHeaderSize : kGenericHeaderSize;
}

// The argument's field with its offset in the frame.
Field in_frame(const Argument& argument, Family family) {
  Field field = argument.field;
  if (argument.place == Place::type) field.offset = 0;
  if (argument.place == Place::status) field.offset = kStatusOffset;
  if (argument.place == Place::code) field.offset = kCodeOffset;
  if (in_payload(argument)) {
    field.offset = static_cast<uint16_t>(field.offset + header_size(family));
  }
  return field;
}

// Skips optional arguments that are not in the frame.
std::vector<Field> fields_in(const Request& request, Family family, View frame) {
  std::vector<Field> fields;
  for (const Argument& argument : request.payload.arguments) {
    if (argument.place == Place::id) continue;
    Field field = in_frame(argument, family);
    if (is_required(argument) || lies_within(field, frame)) fields.push_back(field);
  }
  return fields;
}

void check_payload(DecodedFrame& decoded, const Request& request, size_t size) {
  Sizes sizes = sizes_of(request);
  if (size >= sizes.min && size <= sizes.max) return;
  size_t expected = size < sizes.min ? sizes.min : sizes.max;
  decoded.problems.push_back(fmt::format("{} bytes of data, {} expected", size, expected));
}

void add_arguments(DecodedFrame& decoded, const Request& request, Family family) {
  size_t header = header_size(family);
  View frame = part(decoded.frame, 0, header + decoded.length);
  View payload = part(frame, header, decoded.length);
  check_payload(decoded, request, payload.size());
  std::vector<Field> fields = fields_in(request, family, frame);
  if (sizes_of(request).max == 0 && !payload.empty()) {
    Field unexpected = any_data().fields[0];
    unexpected.offset = static_cast<uint16_t>(header);
    fields.push_back(unexpected);
  }
  decoded.fields = decode_fields({fields}, frame, decoded.problems);
  note_personal(decoded, &request, 0, header);
  if (!decoded.problems.empty()) note_payload(decoded, 0, header);
}

void decode_known(DecodedFrame& decoded, Family family, uint32_t id) {
  size_t header = header_size(family);
  bool is_cdma = family == Family::cdma;
  decoded.id = id_text(family, id);
  decoded.length = is_cdma ? load_le(decoded.frame, 4, 4) : load_be(decoded.frame, 4, 4);
  check_size(decoded, header);
  size_t size = part(decoded.frame, header, decoded.length).size();
  const Request* row = row_for(family, id, size);
  decoded.name = row ? row->name : "";
  add_arguments(decoded, row ? *row : any_row(family), family);
  if (is_cdma) note_code(decoded);
}

}  // namespace

DecodedFrame decode_request(View frame) {
  DecodedFrame decoded;
  decoded.frame.assign(frame.begin(), frame.end());
  Classified classified = classify(frame);
  if (classified.kind == Classified::Kind::unknown) {
    decoded.id = "0x" + to_hex(part(frame, 0, sizeof(uint32_t)));
    note_all(decoded);
    decoded.problems.emplace_back("the header is of neither family of requests");
    return decoded;
  }
  bool is_cdma = classified.kind == Classified::Kind::cdma;
  decode_known(decoded, is_cdma ? Family::cdma : Family::generic, classified.id);
  return decoded;
}

}  // namespace qorextctl
