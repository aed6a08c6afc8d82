// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>

#include "tools/docs/pages.h"
#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/protocol.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/output/catalogue_text.h"

namespace docs {

namespace {

using qorextctl::Argument;
using qorextctl::Family;
using qorextctl::Field;
using qorextctl::Group;
using qorextctl::Layout;
using qorextctl::Place;
using qorextctl::ReplyForm;
using qorextctl::Request;
using qorextctl::Second;

constexpr const char* kIntroduction = R"(# Host protocol

The frames on the three pipes between `qorext_client` and its parent, as `qorextctl` builds and
decodes them. `./dev docs` prints this page from the tables of `protocol/`; do not edit it.

Numbers in payloads are little-endian unless the type says otherwise. Offsets are in bytes from the
start of the payload. A field without a size extends to the end of the payload.

## Frames

| Frame | Header | After the data |
|---|---|---|
| generic request | {} bytes: u8 type, u24 id, u32 length, big-endian | |
| generic reply | the request's header, its length little-endian; 0x{:X} is the error reply without data | |
| CDMA-hook request | {} bytes: u32 id, u32 length, u32 status, 6 bytes code, little-endian | |
| CDMA-hook reply | the same {} bytes | {} bytes |
| unsolicited, format {} | {} bytes: u32 format, u32 header size, u32 id, u32 length, u32 status, 6 bytes | {} bytes |
| unsolicited, format {} | {} bytes: u32 format, u32 header size, u32 id, u32 length | {} bytes |

The daemon treats the result of one read as one request, of at most {} bytes.

)";

std::string introduction() {
  using namespace protocol;
  return fmt::format(kIntroduction, kGenericHeaderSize, kGenericError, kCdmaHeaderSize,
                     kCdmaHeaderSize, kCdmaTrailerSize, kUnsolCdmaFormat, kUnsolCdmaDataOffset,
                     kUnsolOverhead - kUnsolCdmaDataOffset, kUnsolGenericFormat, kUnsolHeaderSize,
                     kUnsolOverhead - kUnsolHeaderSize, kMaxRequestBytes);
}

std::string size_text(const Field& field) {
  size_t width = qorextctl::width_of(field.type);
  size_t size = (width != 0 ? width : field.size) * field.count;
  return size == 0 ? "" : std::to_string(size);
}

std::string reply_rows(std::span<const Field> fields, const char* front = "") {
  std::string text;
  for (const Field& field : fields) {
    text += fmt::format("| {}{} | {} | {} | `{}` |\n", front, field.offset, size_text(field),
                        qorextctl::type_text(field), field.name);
  }
  return text;
}

std::string group_rows(const Group& group) {
  return fmt::format("| {} | {} | {} | `{}` |\n", group.offset, group.stride * group.count,
                     qorextctl::type_text(group), group.name) +
         reply_rows(group.fields, "+");
}

std::string layout_table(const Layout& layout) {
  std::string text = "| Offset | Size | Type | Field |\n|---|---|---|---|\n";
  text += reply_rows(layout.fields);
  return layout.group ? text + group_rows(*layout.group) : text;
}

std::string place_text(const Argument& argument) {
  switch (argument.place) {
    case Place::id:
      return "header: id";
    case Place::type:
      return "header: type";
    case Place::status:
      return "header: status";
    case Place::code:
      return "header: code";
    case Place::code_and_payload:
      return fmt::format("header: code, and {}", argument.field.offset);
    default:
      return std::to_string(argument.field.offset);
  }
}

std::string arguments_table(const Request& request) {
  std::string text =
      "| Offset | Size | Type | Argument | Accepts | If left out | Meaning "
      "|\n|---|---|---|---|---|---|---|\n";
  for (const Argument& argument : request.payload.arguments) {
    text += fmt::format("| {} | {} | {} | `{}` | {} | {} | {} |\n", place_text(argument),
                        size_text(argument.field), qorextctl::type_text(argument.field),
                        argument.field.name, qorextctl::describe(argument),
                        qorextctl::default_text(argument.otherwise), argument.help);
  }
  return text;
}

std::string payload_text(const Request& request) {
  if (request.payload.arguments.empty()) return "No payload.\n";
  std::string size = request.payload.size == 0
                         ? ""
                         : fmt::format(" (at least {} bytes; those without an argument are zero)",
                                       request.payload.size);
  return fmt::format("Payload{}:\n\n", size) + arguments_table(request);
}

// Where the reply reports its status.
const char* status_text(const Request& request) {
  switch (request.reply.form) {
    case ReplyForm::cdma:
      return "Status in the header.";
    case ReplyForm::generic:
      return "A single data byte 5 is a failure.";
    case ReplyForm::generic_status:
      return "The first data byte is the status.";
    default:
      return "568 bytes without a header, all zero after a failure.";
  }
}

std::string second_text(Second second) {
  if (second == Second::none) return "";
  return second == Second::always
             ? " A second reply with status 6 follows."
             : " A second reply with status 6 follows if the request has a payload.";
}

std::string reply_text(const Request& request) {
  std::string text =
      fmt::format("Reply: {}{}", status_text(request), second_text(request.reply.second));
  if (request.reply.id != 0) {
    text += fmt::format(" Its id is {}.", qorextctl::id_text(family_of(request), request.reply.id));
  }
  const Layout* layout = request.reply.layout;
  if (!layout) return text + " No data.\n";
  std::string size = layout->size == 0 ? "" : fmt::format(" {} bytes of data.", layout->size);
  return text + size + "\n\n" + layout_table(*layout);
}

std::string request_text(const Request& request) {
  std::string id = qorextctl::any_or_id(request);
  return fmt::format("### {}\n\n{}: {}.\n\n{}\n{}\n", request.name, id, request.description,
                     payload_text(request), reply_text(request));
}

std::string requests_text(Family family) {
  std::string text;
  for (const Request& request : qorextctl::catalogue()) {
    if (family_of(request) == family) text += request_text(request);
  }
  return text;
}

std::string statuses_text() {
  std::string text = "## Statuses\n\n| Status | Meaning |\n|---|---|\n";
  for (const protocol::Status& status : protocol::kStatuses) {
    text += fmt::format("| {} | {} |\n", status.value, status.name);
  }
  return text + "\n";
}

std::string unsolicited_text() {
  std::string text = "## Unsolicited frames\n\n";
  for (const auto& message : qorextctl::unsolicited_messages()) {
    text += fmt::format("### unsolicited {}\n\n0x{:08X}, format {}.", message.name, message.id,
                        message.format);
    bool has_data = !message.layout->fields.empty();
    text += has_data ? "\n\n" + layout_table(*message.layout) + "\n" : " No data.\n\n";
  }
  text.pop_back();
  return text;
}

}  // namespace

std::string host_protocol() {
  return introduction() + statuses_text() + "## CDMA-hook requests\n\n" +
         requests_text(Family::cdma) + "## Generic requests\n\n" + requests_text(Family::generic) +
         unsolicited_text();
}

}  // namespace docs
