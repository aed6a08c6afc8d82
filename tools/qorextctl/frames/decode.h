// SPDX-License-Identifier: Apache-2.0
// Decodes frames to named fields.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

using Json = nlohmann::ordered_json;

// A field of a frame: a number, text, an array of numbers, or the records of a group.
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
  std::string name;  // of the request or the unsolicited message; empty when unknown
  std::string id;    // "0x02000016", "0x050019"
  Bytes frame;
  uint32_t length = 0;             // from the frame's length field
  std::optional<uint32_t> status;  // nothing for a frame without a status
  std::string status_name;
  Items fields;
  std::vector<std::string> problems;  // how the frame differs from its description
  std::vector<ByteRange> personal;    // of the frame, see personal.h
  bool is_id_personal = false;
  bool masked = false;
};

// Leaves out fields that are not completely in the data and adds them to `problems`.
Items decode_fields(const Layout& layout, View data, std::vector<std::string>& problems);

// `request` is null for an id without a row.
DecodedFrame decode_reply(const Request* request, ReplyForm form, uint32_t id, View frame);
DecodedFrame decode_unsolicited(View frame);
// Uses the row whose payload size fits.
DecodedFrame decode_request(View frame);

// "success", "failure", ...; "unknown" for other values.
std::string status_name(uint32_t status);

// "0x02000016" for a CDMA-hook id, "0x050019" for a generic one.
std::string id_text(Family family, uint32_t id);

// For the decoders.
bool lies_within(const Field& field, View data);
// Adds a problem when the size of the frame does not match its length field. `overhead` is the size
// of header and trailer.
void check_size(DecodedFrame& decoded, size_t overhead);

}  // namespace qorextctl
