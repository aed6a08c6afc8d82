// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/log/log_reader.h"

#include <fmt/format.h>

#include "protocol/engineering.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

namespace {

constexpr Field kPieceFields[] = {hex("data", 0)};
constexpr Layout kPiece = {kPieceFields};

constexpr Field kTunerFields[] = {u32("length", 0), counted(hex("data", 4), "length")};
constexpr Layout kTuner = {kTunerFields, 32};

LogContent content(const char* type, const std::string& name, const std::string& id,
                   const Layout& layout, const Bytes& bytes) {
  DecodedFrame frame;
  frame.name = name;
  frame.id = id;
  frame.frame = bytes;
  frame.length = static_cast<uint32_t>(bytes.size());
  frame.fields = decode_fields(layout, bytes, frame.problems);
  return {type, frame};
}

// Content with the name and the id of a request.
LogContent content_for(const char* type, const char* request, const Layout& layout,
                       const Bytes& bytes) {
  const Request& row = *find_request(request);
  return content(type, row.name, id_text(family_of(row), row.id), layout, bytes);
}

// The modem returns these records as hexadecimal text, and the daemon dumps the text.
LogContent engineering(const char* request, const Layout& layout, const Bytes& text) {
  auto record = parse_hex({reinterpret_cast<const char*>(text.data()), text.size()});
  if (record) return content_for("engineering", request, layout, *record);
  LogContent found = content_for("engineering", request, kPiece, text);
  found.frame.problems.emplace_back("the modem's text is not hex (pairs of digits)");
  return found;
}

}  // namespace

LogContent decode_item(const ItemAddress& address, const Bytes& bytes) {
  const NvItem* item = find_nv_item(address.item);
  bool is_whole = address.record == 0 && address.offset == 0;
  LogContent found = content("nv-item", item ? item->name : "", std::to_string(address.item),
                             item && is_whole ? item->layout : kPiece, bytes);
  if (!is_whole) {
    Items at = {{"record", address.record, {}}, {"offset", address.offset, {}}};
    found.frame.fields.insert(found.frame.fields.begin(), at.begin(), at.end());
  }
  if (!is_personal_item(address.item)) return found;
  found.frame.personal.push_back({0, bytes.size()});
  if (!is_whole) found.frame.fields.back().is_personal = true;
  return found;
}

std::optional<LogContent> decode_dump(Dump dump, const std::optional<ItemAddress>& address,
                                      const Bytes& bytes) {
  if (bytes.empty()) return std::nullopt;
  switch (dump) {
    case Dump::reply:
      return LogContent{"reply", decode_as(FrameKind::reply, bytes)};
    case Dump::nv_item:
      return address ? std::optional(decode_item(*address, bytes)) : std::nullopt;
    case Dump::data_plmn:
      return content_for("modem-response", "data-plmn", *find_request("data-plmn")->reply.layout,
                         bytes);
    case Dump::tuner:
      return content_for("modem-response", "tune", kTuner, bytes);
    case Dump::call_processing:
      return engineering("get-call-processing", call_processing_record(), bytes);
    case Dump::evdo:
      return engineering("get-evdo", evdo_record(), bytes);
    default:
      return std::nullopt;
  }
}

}  // namespace qorextctl
