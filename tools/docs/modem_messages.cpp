// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "modem/messages/services.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "tools/docs/pages.h"

namespace docs {

namespace {

using qmi_idl::Direction;
using qmi_idl::Element;
using qmi_idl::Kind;
using qmi_idl::Message;
using qmi_idl::Service;
using qmi_idl::Shape;

constexpr const char* kIntroduction = R"(# Modem messages

The QMI messages between `qorext_client` and the modem, as the client library and the simulated
modem encode and decode them. `./dev docs` prints this page from their tables; do not edit it.

Numbers are little-endian. The elements of a TLV are consecutive. A mandatory TLV is always present;
a byte of the C structure, the flag, reports whether an optional one is. Types are those on the wire.
Offset and size are those of the C structure, whose numbers may be wider.

)";

const char* name_of(Direction direction) {
  switch (direction) {
    case Direction::request:
      return "request";
    case Direction::response:
      return "response";
    default:
      return "indication";
  }
}

std::string number_text(const Shape& shape) {
  return fmt::format("{}{}", shape.is_signed ? "i" : "u", 8 * shape.wire);
}

std::string type_text(const Shape& shape) {
  switch (shape.kind) {
    case Kind::integer:
      return number_text(shape);
    case Kind::bytes:
      return fmt::format("{} bytes", shape.capacity);
    case Kind::text:
      return fmt::format("u{} length, at most {} characters", 8 * shape.count_wire, shape.capacity);
    case Kind::array:
      return fmt::format("u{} count, at most {} {}", 8 * shape.count_wire, shape.capacity,
                         number_text(shape));
    default:
      return "u16 result, u16 error";
  }
}

std::string wire_size(const Shape& shape) {
  size_t max = qmi_idl::wire_limit(shape);
  bool varies = shape.kind == Kind::text || shape.kind == Kind::array;
  return varies ? fmt::format("{} to {}", shape.count_wire, max) : std::to_string(max);
}

std::string row(const Element& element) {
  const Shape& shape = element.shape;
  bool is_optional = element.valid_offset != qmi_idl::kNoOffset;
  std::string presence =
      is_optional ? fmt::format("optional, flag at {}", element.valid_offset) : "mandatory";
  return fmt::format("| 0x{:02X} | {} | `{}` | {} | {} | {} | {} |\n", element.tlv, presence,
                     element.name, type_text(shape), wire_size(shape), shape.offset,
                     qmi_idl::end_of(shape) - shape.offset);
}

std::string message_text(const Service& service, const Message& message) {
  std::string text = fmt::format("### {} {} {}\n\nMessage 0x{:04X}", service.name, message.name,
                                 name_of(message.direction), message.id);
  if (message.elements.empty()) return text + ", without content.\n\n";
  text += fmt::format(", {} bytes as a C structure.\n\n", message.size);
  text += "| TLV | | Element | Type | Bytes | Offset | Size |\n|---|---|---|---|---|---|---|\n";
  for (const Element& element : message.elements) text += row(element);
  return text + "\n";
}

std::string service_text(const Service& service) {
  std::string text = fmt::format("## {}\n\nQMI service 0x{:02X}, version {}.\n\n", service.name,
                                 service.id, service.version);
  for (const Message& message : service.messages) text += message_text(service, message);
  return text;
}

}  // namespace

std::string modem_messages() {
  std::string text = kIntroduction;
  for (const Service* service : modem::services()) text += service_text(*service);
  text.pop_back();
  return text;
}

}  // namespace docs
