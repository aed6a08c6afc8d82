// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_idl/codec.h"

#include <string.h>

#include <algorithm>

namespace qmi_idl {
namespace {

constexpr size_t kTlvHeaderSize = 3;

// The bytes that are left to read or write.
template <typename Byte>
class Cursor {
 public:
  explicit Cursor(std::span<Byte> bytes) : rest_(bytes) {}

  // Null when fewer than `size` bytes are left; the cursor then stays where it is.
  Byte* take(size_t size) {
    if (size > rest_.size()) return nullptr;
    Byte* start = rest_.data();
    rest_ = rest_.subspan(size);
    return start;
  }
  size_t left() const { return rest_.size(); }

 private:
  std::span<Byte> rest_;
};

using Reader = Cursor<const uint8_t>;
using Writer = Cursor<uint8_t>;

// Whether the numbers have the same bytes on the wire and in the structure, on a little-endian
// machine. They are then copied at once, which pays for long byte arrays.
bool has_wire_layout(const Shape& shape) { return shape.wire == shape.memory; }

bool encode_element(const Shape& shape, const uint8_t* structure, Writer& out) {
  size_t count = count_in(shape, structure);
  if (count > shape.capacity) return false;

  uint8_t* head = out.take(shape.count_wire);
  uint8_t* body = out.take(count * shape.wire);
  if (head == nullptr || body == nullptr) return false;

  store_number(head, shape.count_wire, count);
  const uint8_t* numbers = structure + shape.offset;
  if (has_wire_layout(shape)) {
    memcpy(body, numbers, count * shape.wire);
    return true;
  }
  for (size_t i = 0; i < count; ++i) {
    store_number(body + i * shape.wire, shape.wire,
                 load_number(numbers + i * shape.memory, shape.memory));
  }
  return true;
}

void decode_numbers(const Shape& shape, const uint8_t* body, size_t count, uint8_t* numbers) {
  if (has_wire_layout(shape)) {
    memcpy(numbers, body, count * shape.wire);
    return;
  }
  for (size_t i = 0; i < count; ++i) {
    uint64_t value = load_number(body + i * shape.wire, shape.wire);
    store_number(numbers + i * shape.memory, shape.memory,
                 shape.is_signed ? sign_extend(value, shape.wire) : value);
  }
}

bool decode_element(const Shape& shape, Reader& in, uint8_t* structure) {
  size_t count = shape.capacity;
  if (shape.count_wire != 0) {
    const uint8_t* head = in.take(shape.count_wire);
    if (head == nullptr) return false;
    count = static_cast<size_t>(load_number(head, shape.count_wire));
  }
  if (count > shape.capacity) return false;

  const uint8_t* body = in.take(count * shape.wire);
  if (body == nullptr) return false;

  decode_numbers(shape, body, count, structure + shape.offset);
  if (shape.kind == Kind::array) {
    store_number(structure + shape.count_offset, shape.count_memory, count);
  }
  return true;
}

bool is_present(const Element& element, const uint8_t* structure) {
  return element.valid_offset == kNoOffset || structure[element.valid_offset] != 0;
}

// The leading elements that share the first one's TLV.
std::span<const Element> tlv_of(std::span<const Element> elements) {
  size_t size = 1;
  while (size < elements.size() && elements[size].tlv == elements[0].tlv) ++size;
  return elements.first(size);
}

// The header is written last, when the length is known.
bool encode_tlv(std::span<const Element> tlv, const uint8_t* structure, Writer& out) {
  uint8_t* head = out.take(kTlvHeaderSize);
  if (head == nullptr) return false;

  size_t before = out.left();
  for (const Element& element : tlv) {
    if (!encode_element(element.shape, structure, out)) return false;
  }
  size_t length = before - out.left();
  if (length > UINT16_MAX) return false;
  head[0] = tlv[0].tlv;
  store_number(head + 1, 2, length);
  return true;
}

// Ignores bytes after the known elements: newer services append elements to a TLV.
bool decode_tlv(std::span<const Element> tlv, Reader in, uint8_t* structure) {
  for (const Element& element : tlv) {
    if (!decode_element(element.shape, in, structure)) return false;
  }
  if (tlv[0].valid_offset != kNoOffset) structure[tlv[0].valid_offset] = 1;
  return true;
}

std::span<const Element> find_tlv(const Message& message, uint8_t type) {
  auto first = std::find_if(message.elements.begin(), message.elements.end(),
                            [type](const Element& element) { return element.tlv == type; });
  if (first == message.elements.end()) return {};
  return tlv_of(message.elements.subspan(static_cast<size_t>(first - message.elements.begin())));
}

bool reports_failure(const Message& message, const uint8_t* structure) {
  return std::any_of(message.elements.begin(), message.elements.end(), [&](const Element& element) {
    return element.shape.kind == Kind::result &&
           load_number(structure + element.shape.offset, element.shape.memory) != 0;
  });
}

// A service that fails a request may send the result TLV only.
bool has_all_mandatory(const Message& message, const bool (&seen)[256], const uint8_t* structure) {
  bool failure = reports_failure(message, structure);
  return std::all_of(message.elements.begin(), message.elements.end(), [&](const Element& element) {
    return seen[element.tlv] || element.valid_offset != kNoOffset ||
           (failure && element.shape.kind != Kind::result);
  });
}

}  // namespace

size_t count_in(const Shape& shape, const uint8_t* structure) {
  switch (shape.kind) {
    case Kind::array:
      return static_cast<size_t>(load_number(structure + shape.count_offset, shape.count_memory));
    case Kind::text:
      return strnlen(reinterpret_cast<const char*>(structure + shape.offset), shape.capacity);
    default:
      return shape.capacity;
  }
}

const Message* find(const Service& service, Direction direction, uint32_t id) {
  for (const Message& message : service.messages) {
    if (message.id == id && message.direction == direction) return &message;
  }
  return nullptr;
}

void store_header(const Header& header, std::span<uint8_t, kHeaderSize> out) {
  out[0] = static_cast<uint8_t>(header.type);
  store_number(&out[1], 2, header.transaction);
  store_number(&out[3], 2, header.message_id);
  store_number(&out[5], 2, header.length);
}

std::optional<Header> load_header(std::span<const uint8_t> packet) {
  if (packet.size() < kHeaderSize) return std::nullopt;
  uint8_t type = packet[0];
  if (type != 0 && type != 2 && type != 4) return std::nullopt;

  Header header{static_cast<WireType>(type), static_cast<uint16_t>(load_number(&packet[1], 2)),
                static_cast<uint16_t>(load_number(&packet[3], 2)),
                static_cast<uint16_t>(load_number(&packet[5], 2))};
  if (packet.size() - kHeaderSize != header.length) return std::nullopt;
  return header;
}

ssize_t encode(const Message& message, std::span<const uint8_t> structure,
               std::span<uint8_t> wire) {
  if (structure.size() != message.size) return -1;

  Writer out(wire);
  for (auto rest = message.elements; !rest.empty();) {
    auto tlv = tlv_of(rest);
    rest = rest.subspan(tlv.size());
    if (!is_present(tlv[0], structure.data())) continue;
    if (!encode_tlv(tlv, structure.data(), out)) return -1;
  }
  return static_cast<ssize_t>(wire.size() - out.left());
}

bool decode(const Message& message, std::span<const uint8_t> wire, std::span<uint8_t> structure) {
  if (structure.size() != message.size) return false;
  std::fill(structure.begin(), structure.end(), uint8_t{0});

  bool seen[256] = {};
  Reader in(wire);
  while (in.left() != 0) {
    const uint8_t* head = in.take(kTlvHeaderSize);
    if (head == nullptr) return false;
    size_t length = static_cast<size_t>(load_number(head + 1, 2));
    const uint8_t* body = in.take(length);
    if (body == nullptr) return false;

    auto tlv = find_tlv(message, head[0]);
    if (tlv.empty()) continue;
    if (!decode_tlv(tlv, Reader(std::span(body, length)), structure.data())) return false;
    seen[head[0]] = true;
  }
  return has_all_mandatory(message, seen, structure.data());
}

}  // namespace qmi_idl
