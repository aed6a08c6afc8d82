// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/output/catalogue_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/values.h"

namespace qorextctl {

namespace {

// For example "rde-id= [record=]": optional arguments are in brackets.
std::string usage(const Request& request) {
  std::vector<std::string> names;
  for (const Argument& argument : request.payload.arguments) {
    std::string name = fmt::format("{}=", argument.field.name);
    names.push_back(is_required(argument) ? name : "[" + name + "]");
  }
  if (request.payload.takes_record) names.emplace_back("[json=FILE]");
  return fmt::format("{}", fmt::join(names, " "));
}

std::string row(const Request& request) {
  return fmt::format("{:<21} {:<11} {}\n", request.name, any_or_id(request), request.description);
}

std::string argument_row(const Argument& argument) {
  return fmt::format("  {:<16} {} ({}; {})\n", argument.field.name + std::string("="),
                     argument.help, describe(argument), default_text(argument.otherwise));
}

std::string field_row(const char* indent, const Field& field) {
  return fmt::format("{}{:<20} {}\n", indent, field.name, type_text(field));
}

// The fields of a successful reply.
std::string reply_text(const Layout& layout) {
  std::string text = "reply:\n";
  for (const Field& field : layout.fields) text += field_row("  ", field);
  if (!layout.group) return text;
  text += fmt::format("  {:<20} {}\n", layout.group->name, type_text(*layout.group));
  for (const Field& field : layout.group->fields) text += field_row("    ", field);
  return text;
}

std::string details(const Request& request) {
  std::string text = row(request);
  for (const Argument& argument : request.payload.arguments) text += argument_row(argument);
  if (request.payload.takes_record) {
    text += fmt::format("  {:<16} {}\n",
                        "json=", "a JSON record with any of these; - is standard input");
  }
  return request.reply.layout ? text + reply_text(*request.reply.layout) : text;
}

Json fields_json(std::span<const Field> fields) {
  Json all = Json::array();
  for (const Field& field : fields) {
    all.push_back({{"name", json_key(field.name)}, {"type", type_text(field)}});
  }
  return all;
}

// With the field names of a decoded reply.
Json reply_json(const Request& request) {
  if (!request.reply.layout) return Json::array();
  Json all = fields_json(request.reply.layout->fields);
  const Group* group = request.reply.layout->group;
  if (group) {
    all.push_back({{"name", group->name},
                   {"type", type_text(*group)},
                   {"fields", fields_json(group->fields)}});
  }
  return all;
}

}  // namespace

std::string default_text(const Default& otherwise) {
  switch (otherwise.kind) {
    case Default::Kind::required:
      return "required";
    case Default::Kind::absent:
      return "left out";
    case Default::Kind::value:
      return *otherwise.text ? fmt::format("default {}", otherwise.text) : "default empty";
    case Default::Kind::length_of:
      return fmt::format("default the length of {}", otherwise.text);
    default:
      return fmt::format("default {}", otherwise.text);
  }
}

std::string any_or_id(const Request& request) {
  if (request.id == 0 || request.id == kCdmaIds) return "any";
  return id_text(family_of(request), request.id);
}

std::string catalogue_text(const std::vector<const Request*>& requests) {
  if (requests.size() == 1) return details(*requests[0]);
  std::string text;
  for (const Request* request : requests) {
    text += row(*request);
    if (!request->payload.arguments.empty())
      text += fmt::format("{:<33} {}\n", "", usage(*request));
  }
  return text;
}

Json catalogue_json(const Request& request) {
  Json arguments = Json::array();
  for (const Argument& argument : request.payload.arguments) {
    arguments.push_back({{"name", argument.field.name},
                         {"required", is_required(argument)},
                         {"accepts", describe(argument)},
                         {"otherwise", default_text(argument.otherwise)},
                         {"help", argument.help}});
  }
  return {{"name", request.name},
          {"family", family_of(request) == Family::cdma ? "cdma" : "generic"},
          {"id", any_or_id(request)},
          {"description", request.description},
          {"arguments", arguments},
          {"json_record", request.payload.takes_record},
          {"reply_fields", reply_json(request)},
          {"replies", request.reply.second == Second::none ? 1 : 2}};
}

}  // namespace qorextctl
