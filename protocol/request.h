// SPDX-License-Identifier: Apache-2.0
// The request catalogue: one row per request, with all that is needed to build the request, to
// decode its reply, to mask personal values and to document it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "protocol/field.h"

namespace protocol {

enum class Family : uint8_t {
  generic,  // 8-byte big-endian header
  cdma,     // 18-byte little-endian header, ids 0x02xxxxxx
};

// Where an argument is stored.
enum class Place : uint8_t { payload, id, type, status, code, code_and_payload };

// The value of an argument that is left out.
struct Default {
  enum class Kind : uint8_t { required, absent, value, length_of, same_as } kind;
  const char* text;  // the value, or the name of the other argument
};
constexpr Default kRequired = {Default::Kind::required, ""};
constexpr Default kAbsent = {Default::Kind::absent, ""};  // its bytes are left out
constexpr Default value(const char* text) { return {Default::Kind::value, text}; }
constexpr Default length_of(const char* name) { return {Default::Kind::length_of, name}; }
constexpr Default same_as(const char* name) { return {Default::Kind::same_as, name}; }

struct Argument {
  Field field;
  Default otherwise;
  const char* help;
  uint32_t min = 0;  // value of a number; length of bytes, text and lists
  uint32_t max = 0;  // 0: the limits of the type
  Place place = Place::payload;
  const char* choices = "";  // values that completion offers, separated by spaces
};

constexpr bool is_required(const Argument& argument) {
  return argument.otherwise.kind == Default::Kind::required;
}

constexpr Argument offering(const char* choices, Argument argument) {
  argument.choices = choices;
  return argument;
}

enum class ReplyForm : uint8_t {
  cdma,            // 18-byte header with a status, data, two zero bytes
  generic,         // 8-byte header, data; the single data byte 5 is a failure
  generic_status,  // the same, the first data byte is a status
  data_plmn,       // 568 bytes without a header, all zero after a failure
};

// Requests that get a second reply with the same id, "not supported", after their own. A daemon
// that does not know the request sends only that one.
enum class Second : uint8_t { none, always, with_payload };

struct Reply {
  ReplyForm form = ReplyForm::cdma;
  const Layout* layout = nullptr;  // none: no data
  uint32_t id = 0;                 // 0: the request's
  Second second = Second::none;
};

struct Payload {
  std::span<const Argument> arguments;
  uint32_t size = 0;          // the least number of bytes; those without an argument are zero
  bool takes_record = false;  // json=FILE reads the arguments from a JSON object
};

struct Request {
  const char* name;
  uint32_t id;
  const char* description;
  Payload payload = {};
  Reply reply = {};
};

constexpr uint32_t kCdmaIds = 0x02000000;
constexpr Family family_of(const Request& request) {
  return (request.id & 0xFF000000) == kCdmaIds ? Family::cdma : Family::generic;
}

// All requests, in the order of the documentation.
std::span<const Request> catalogue();

// Null when no row matches.
const Request* find_request(std::string_view name);
const Request* find_request(Family family, uint32_t id);

// The families' tables.
std::span<const Request> nv_requests();
std::span<const Request> nam_requests();
std::span<const Request> carrier_requests();
std::span<const Request> engineering_requests();
std::span<const Request> feature_requests();

}  // namespace protocol
