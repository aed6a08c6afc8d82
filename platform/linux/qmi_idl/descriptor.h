// SPDX-License-Identifier: Apache-2.0
// Describes a QMI service's messages, on the wire and as C structures. One constexpr table for each
// service is used by the client library, the simulated modem and the decoders.
//
// A message is a list of elements. Consecutive elements with the same TLV type share one TLV, in
// their order. Numbers are little-endian on the wire. In the structure they are naturally aligned
// native integers, which may be wider (an enumeration takes one byte on the wire and four in the
// structure) and are then sign-extended.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <span>

namespace qmi_idl {

constexpr uint8_t kResultTlv = 0x02;
constexpr uint16_t kNoOffset = 0xFFFF;

enum class Kind : uint8_t {
  integer,  // one number
  bytes,    // `capacity` bytes, without a count or terminator
  text,     // a length of `count_wire` bytes, then characters; NUL-terminated in the structure
  array,    // a count of `count_wire` bytes, then as many numbers; the structure has the count too
  result,   // {u16 result, u16 error} on the wire, two u32 in the structure
};

struct Shape {
  Kind kind;
  bool is_signed;
  uint8_t wire;           // bytes of one number on the wire
  uint8_t memory;         // bytes of one number in the structure
  uint16_t offset;        // of the (first) number in the structure
  uint16_t capacity;      // the most numbers that the structure holds; text: without the NUL
  uint8_t count_wire;     // text, array: bytes of the count on the wire
  uint8_t count_memory;   // array: bytes of the count in the structure
  uint16_t count_offset;  // array: of the count in the structure
};

struct Element {
  uint8_t tlv;
  uint16_t valid_offset;  // of the validity byte of an optional TLV, kNoOffset for a mandatory one
  const char* name;
  Shape shape;
};

enum class Direction : uint8_t { request, response, indication };

struct Message {
  uint32_t id;
  Direction direction;
  const char* name;
  uint16_t size;  // of the C structure; 0 for a message without one
  std::span<const Element> elements;
};

struct Service {
  const char* name;
  uint32_t id;      // the QMI service number
  uint8_t version;  // the major version, for lookup and publication
  std::span<const Message> messages;
};

// The description that a service object (qmi_idl_service_object_type) points to.
inline const Service& service_of(const void* service_object) {
  return *static_cast<const Service*>(service_object);
}

// The message with this id and direction, or null.
const Message* find(const Service& service, Direction direction, uint32_t id);

constexpr Shape number(bool is_signed, uint8_t wire, uint8_t memory, uint16_t offset) {
  return {Kind::integer, is_signed, wire, memory, offset, 1, 0, 0, kNoOffset};
}
constexpr Shape u8(uint16_t offset) { return number(false, 1, 1, offset); }
constexpr Shape u16(uint16_t offset) { return number(false, 2, 2, offset); }
constexpr Shape u32(uint16_t offset) { return number(false, 4, 4, offset); }
constexpr Shape i8(uint16_t offset) { return number(true, 1, 1, offset); }
constexpr Shape i16(uint16_t offset) { return number(true, 2, 2, offset); }
constexpr Shape i32(uint16_t offset) { return number(true, 4, 4, offset); }

// Enumerations: one byte on the wire, u32 in the structure.
constexpr Shape enum8(uint16_t offset) { return number(false, 1, 4, offset); }
constexpr Shape signed_enum8(uint16_t offset) { return number(true, 1, 4, offset); }

constexpr Shape result(uint16_t offset) {
  return {Kind::result, false, 2, 4, offset, 2, 0, 0, kNoOffset};
}
constexpr Shape bytes(uint16_t offset, uint16_t count) {
  return {Kind::bytes, false, 1, 1, offset, count, 0, 0, kNoOffset};
}
// At most `capacity` characters. The structure has one more byte, for the NUL.
constexpr Shape text8(uint16_t offset, uint16_t capacity) {
  return {Kind::text, false, 1, 1, offset, capacity, 1, 0, kNoOffset};
}

struct Count {
  uint8_t wire;
  uint8_t memory;
  uint16_t offset;
};
constexpr Count count8_u32(uint16_t offset) { return {1, 4, offset}; }
constexpr Count count16_u32(uint16_t offset) { return {2, 4, offset}; }
constexpr Count count8_u16(uint16_t offset) { return {1, 2, offset}; }

constexpr Shape array(Count count, Shape item, uint16_t capacity) {
  return {Kind::array, item.is_signed, item.wire,    item.memory, item.offset,
          capacity,    count.wire,     count.memory, count.offset};
}

// The offset after the element in the structure.
constexpr size_t end_of(const Shape& shape) {
  size_t terminator = shape.kind == Kind::text ? 1 : 0;
  return size_t{shape.offset} + size_t{shape.memory} * shape.capacity + terminator;
}

// The element's maximum size on the wire in bytes, without its TLV's header.
constexpr size_t wire_limit(const Shape& shape) {
  return size_t{shape.count_wire} + size_t{shape.wire} * shape.capacity;
}

// Whether all elements are inside the structure and each TLV's elements are consecutive, with one
// validity byte.
constexpr bool is_consistent(const Message& message) {
  bool seen[256] = {};
  for (size_t i = 0; i < message.elements.size(); ++i) {
    const Element& element = message.elements[i];
    const Shape& shape = element.shape;
    if (end_of(shape) > message.size) return false;
    if (shape.kind == Kind::array && shape.count_offset + shape.count_memory > message.size) {
      return false;
    }
    if (element.valid_offset != kNoOffset && element.valid_offset >= message.size) return false;
    bool continues = i > 0 && message.elements[i - 1].tlv == element.tlv;
    if (continues && message.elements[i - 1].valid_offset != element.valid_offset) return false;
    if (!continues && seen[element.tlv]) return false;
    seen[element.tlv] = true;
  }
  return true;
}

constexpr bool is_consistent(const Service& service) {
  for (const Message& message : service.messages) {
    if (!is_consistent(message)) return false;
  }
  return true;
}

}  // namespace qmi_idl
