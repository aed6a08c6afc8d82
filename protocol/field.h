// SPDX-License-Identifier: Apache-2.0
// One value of a payload: its type and its place. Requests and replies use the same fields, so a
// value that a reply shows can be passed as an argument.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace protocol {

enum class Type : uint8_t {
  u8,
  i8,
  u16,
  i16,
  u32,
  i32,
  u32_be,   // big-endian
  hex,      // bytes
  code,     // six ASCII characters
  digits,   // ASCII digits, NUL-padded to the field's size
  text,     // characters, NUL-padded to the field's size
  string,   // characters and a NUL
  numbers,  // u32 values: 1,2,3
  pairs,    // pairs of u32 values: 1/2,3/4
  dial,     // one byte per digit, 10 for the digit 0; only in NV items
};

constexpr size_t kCodeSize = 6;

// Whether a value identifies the subscriber or unlocks something.
enum class Privacy : uint8_t {
  open,
  personal,
  as_item,  // as the NV item that the field "rde-id" names
};

struct Field {
  const char* name;
  Type type;
  uint16_t offset;                   // from the start of the payload
  uint16_t size = 0;                 // bytes or characters; 0: up to the payload's end
  uint16_t count = 1;                // elements of an array
  const char* counted_by = nullptr;  // the field with the number of elements or bytes in use
  Privacy privacy = Privacy::open;
};

// Bytes of one number; 0 for the types that have no fixed width.
constexpr size_t width_of(Type type) {
  switch (type) {
    case Type::u8:
    case Type::i8:
      return 1;
    case Type::u16:
    case Type::i16:
      return 2;
    case Type::u32:
    case Type::i32:
    case Type::u32_be:
      return 4;
    default:
      return 0;
  }
}

constexpr bool is_signed(Type type) {
  return type == Type::i8 || type == Type::i16 || type == Type::i32;
}

constexpr Field u8(const char* name, uint16_t offset) { return {name, Type::u8, offset}; }
constexpr Field i8(const char* name, uint16_t offset) { return {name, Type::i8, offset}; }
constexpr Field u16(const char* name, uint16_t offset) { return {name, Type::u16, offset}; }
constexpr Field i16(const char* name, uint16_t offset) { return {name, Type::i16, offset}; }
constexpr Field u32(const char* name, uint16_t offset) { return {name, Type::u32, offset}; }
constexpr Field i32(const char* name, uint16_t offset) { return {name, Type::i32, offset}; }
constexpr Field u32_be(const char* name, uint16_t offset) { return {name, Type::u32_be, offset}; }
constexpr Field code(const char* name, uint16_t offset) {
  return {name, Type::code, offset, kCodeSize};
}
constexpr Field hex(const char* name, uint16_t offset, uint16_t size = 0) {
  return {name, Type::hex, offset, size};
}
constexpr Field digits(const char* name, uint16_t offset, uint16_t size) {
  return {name, Type::digits, offset, size};
}
constexpr Field text(const char* name, uint16_t offset, uint16_t size = 0) {
  return {name, Type::text, offset, size};
}
constexpr Field string(const char* name, uint16_t offset) { return {name, Type::string, offset}; }
constexpr Field numbers(const char* name, uint16_t offset) { return {name, Type::numbers, offset}; }
constexpr Field pairs(const char* name, uint16_t offset) { return {name, Type::pairs, offset}; }
constexpr Field dial(const char* name, uint16_t offset, uint16_t size) {
  return {name, Type::dial, offset, size};
}

// `count` consecutive numbers.
constexpr Field list(Field field, uint16_t count) {
  field.count = count;
  return field;
}
constexpr Field counted(Field field, const char* counter) {
  field.counted_by = counter;
  return field;
}
constexpr Field personal(Field field) {
  field.privacy = Privacy::personal;
  return field;
}
// The content of an NV item, whose number is the field "rde-id".
constexpr Field item_data(Field field) {
  field.privacy = Privacy::as_item;
  return field;
}

// Consecutive records of the same fields.
struct Group {
  const char* name;
  uint16_t offset;
  uint16_t stride;
  uint16_t count;
  std::span<const Field> fields;  // offsets from the record's start
  const char* counted_by = nullptr;
};

// The content of a payload, of an item or of a record.
struct Layout {
  std::span<const Field> fields;
  uint32_t size = 0;  // in bytes; 0: varies
  const Group* group = nullptr;
};

}  // namespace protocol
