// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/field_text.h"

#include <fmt/format.h>

namespace qorextctl {

namespace {

const char* name_of(Type type) {
  switch (type) {
    case Type::u8:
      return "u8";
    case Type::i8:
      return "i8";
    case Type::u16:
      return "u16";
    case Type::i16:
      return "i16";
    case Type::u32:
      return "u32";
    case Type::i32:
      return "i32";
    case Type::hex:
      return "bytes";
    case Type::address:
      return "IP address";
    case Type::code:
      return "characters";
    case Type::digits:
      return "ASCII digits";
    case Type::text:
      return "text";
    case Type::string:
      return "text with a NUL";
    case Type::numbers:
      return "u32 numbers";
    case Type::pairs:
      return "pairs of u32";
    default:
      return "digits, a byte each";
  }
}

std::string sized(const Field& field) {
  if (field.count != 1) return fmt::format("{} {}", field.count, name_of(field.type));
  if (field.size == 0) return name_of(field.type);
  if (field.type == Type::hex || field.type == Type::code) {
    return fmt::format("{} {}", field.size, name_of(field.type));
  }
  return fmt::format("{}, {} bytes", name_of(field.type), field.size);
}

std::string in_use(const char* counted_by) {
  return counted_by ? fmt::format(", {} in use", counted_by) : "";
}

}  // namespace

std::string type_text(const Field& field) { return sized(field) + in_use(field.counted_by); }

std::string type_text(const Group& group) {
  return fmt::format("{} records of {} bytes", group.count, group.stride) +
         in_use(group.counted_by);
}

}  // namespace qorextctl
