// Frames as named fields.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "bytes.h"
#include "request.h"

namespace qorextctl {

using Json = nlohmann::ordered_json;

// A field of a frame: a number, a text, an array of numbers, or a group's records.
struct Item {
  std::string name;
  Json value;
  std::vector<std::vector<Item>> records;
  bool is_group = false;
};
using Items = std::vector<Item>;

struct DecodedFrame {
  std::string name;  // the request's, the unsolicited message's; empty when unknown
  std::string id;    // as people write it
  Bytes frame;
  uint32_t length = 0;             // as the frame states it
  std::optional<uint32_t> status;  // nothing where the frame carries none
  std::string status_name;
  Items fields;
  std::vector<std::string> problems;  // in what way the frame is not as it ought to be
};

// Fields that do not lie wholly in the data are left out; what is missing is told in `problems`.
Items decode_fields(const Layout& layout, View data, std::vector<std::string>& problems);

// `request` may be null: an id without a row.
DecodedFrame decode_reply(const Request* request, ReplyForm form, uint32_t id, View frame);
DecodedFrame decode_unsolicited(View frame);

// Of replies that nobody served.
constexpr uint32_t kNotSupported = 6;

// "success", "failure", ...; "unknown" for a status that no reply is known to carry.
std::string status_name(uint32_t status);

}  // namespace qorextctl
