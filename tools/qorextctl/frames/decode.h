// SPDX-License-Identifier: Apache-2.0
// Frames as named fields.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

using Json = nlohmann::ordered_json;

// A field of a frame: a number, a text, an array of numbers, or a group's records.
struct Item {
  std::string name;
  Json value;
  std::vector<std::vector<Item>> records;
  bool is_group = false;
  bool is_personal = false;
  ByteRange place = {};  // within the data that was decoded
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
  std::vector<ByteRange> personal;    // of the frame, see personal.h
  bool is_id_personal = false;
  bool masked = false;
};

// Fields that do not lie wholly in the data are left out; what is missing is told in `problems`.
Items decode_fields(const Layout& layout, View data, std::vector<std::string>& problems);

// `request` may be null: an id without a row.
DecodedFrame decode_reply(const Request* request, ReplyForm form, uint32_t id, View frame);
DecodedFrame decode_unsolicited(View frame);
// By the arguments of the row whose payload fits best.
DecodedFrame decode_request(View frame);

// "success", "failure", ...; "unknown" for a status that no reply is known to carry.
std::string status_name(uint32_t status);

// As people write it.
std::string id_text(Family family, uint32_t id);

// For the decoders of the frames.
bool lies_within(const Field& field, View data);
// Tells when the frame is not as long as its length field and what lies around the data make it.
void check_size(DecodedFrame& decoded, size_t overhead);

}  // namespace qorextctl
