// SPDX-License-Identifier: Apache-2.0
// How a QMI service's messages look, on the wire and as C structures. One constexpr table a service
// says it once, for the client library, the simulated modem and the decoders.
//
// A message is a row of elements. Consecutive elements with the same TLV type share one TLV and
// stand in it in their order. On the wire every number is little-endian; in the structure it is a
// naturally aligned native integer that may be wider (an enumeration of one byte on the wire is
// four bytes in the structure) and is then extended with its sign.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <span>

namespace qmi_idl {

constexpr uint8_t kResultTlv = 0x02;
constexpr uint16_t kNoOffset = 0xFFFF;

enum class Kind : uint8_t {
  integer,  // one number
  bytes,    // `capacity` bytes, neither counted nor terminated
  text,     // a length of `count_wire` bytes, then characters; NUL-terminated in the structure
  array,  // a count of `count_wire` bytes, then as many numbers; the count is kept in the structure
  result,  // {u16 result, u16 error} on the wire, two u32 in the structure
};

struct Shape {
  Kind kind;
  bool is_signed;
  uint8_t wire;           // bytes of one number on the wire
  uint8_t memory;         // bytes of one number in the structure
  uint16_t offset;        // of the (first) number in the structure
  uint16_t capacity;      // how many numbers the structure has room for; text: without the NUL
  uint8_t count_wire;     // text, array: bytes of the count on the wire
  uint8_t count_memory;   // array: bytes of the count in the structure
  uint16_t count_offset;  // array: where the count lies in the structure
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
  uint8_t version;  // the major version that is looked up and published
  std::span<const Message> messages;
};

// What a service object (qmi_idl_service_object_type) points to.
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

// Enumerations: one byte on the wire, a 32-bit word in the structure.
constexpr Shape enum8(uint16_t offset) { return number(false, 1, 4, offset); }
constexpr Shape signed_enum8(uint16_t offset) { return number(true, 1, 4, offset); }

constexpr Shape result(uint16_t offset) {
  return {Kind::result, false, 2, 4, offset, 2, 0, 0, kNoOffset};
}
constexpr Shape bytes(uint16_t offset, uint16_t count) {
  return {Kind::bytes, false, 1, 1, offset, count, 0, 0, kNoOffset};
}
// `capacity` characters at most, and one more byte of the structure for the NUL.
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

// First byte behind the element in the structure.
constexpr size_t end_of(const Shape& shape) {
  size_t terminator = shape.kind == Kind::text ? 1 : 0;
  return size_t{shape.offset} + size_t{shape.memory} * shape.capacity + terminator;
}

// The most bytes that the element can take on the wire, without its TLV's header.
constexpr size_t wire_limit(const Shape& shape) {
  return size_t{shape.count_wire} + size_t{shape.wire} * shape.capacity;
}

// A table that tells the truth: elements inside their structure, TLVs in one piece.
constexpr bool is_sound(const Message& message) {
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

constexpr bool is_sound(const Service& service) {
  for (const Message& message : service.messages) {
    if (!is_sound(message)) return false;
  }
  return true;
}

}  // namespace qmi_idl
