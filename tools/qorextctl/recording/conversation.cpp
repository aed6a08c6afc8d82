// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/conversation.h"

#include <fmt/format.h>

#include <algorithm>

#include "modem/messages/packet.h"
#include "modem/messages/services.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

namespace {

using qmi_idl::Direction;

constexpr int64_t kBlockReady = 0xFF;  // the state that the daemon sends when it starts

// Requests and responses with a field that identifies the subscriber, is a code, or may hold
// anything.
struct PersonalRow {
  std::string_view service;
  std::string_view message;
  bool by_item;  // only for personal NV items
  std::string_view fields[2];
};
constexpr PersonalRow kPersonal[] = {
    {"qorext", "element_read", true, {"data"}},
    {"qorext", "element_write", true, {"data"}},
    {"qorext", "utils", false, {"data"}},
    {"nas", "write_akey", false, {"spc", "akey"}},
    {"dms", "verify_subsidy_lock", false, {"code"}},
    {"dms", "write_spc", false, {"current_spc", "new_spc"}},
};

const PersonalRow* personal_row(const QmiMessage& message) {
  for (const PersonalRow& row : kPersonal) {
    if (row.service == message.service->name && row.message == message.name) return &row;
  }
  return nullptr;
}

bool is_about_personal_item(const Json& fields) {
  auto item = fields.find("rde_id");
  return item != fields.end() && is_personal_item(item->get<uint32_t>());
}

Direction direction(const QmiMessage& message) { return modem::direction_of(message.header.type); }

}  // namespace

DecodedFrame FrameReader::read(FrameKind kind, View frame) {
  if (kind == FrameKind::request) expected_ = expect_reply(frame, nullptr);
  if (kind != FrameKind::reply || !expected_) return decode_as(kind, frame);
  return decode_reply(expected_->request, expected_->form, expected_->id, frame);
}

std::string title_of(const QmiMessage& message) {
  return fmt::format("{} {} {}", message.service->name, message.name,
                     modem::direction_text(direction(message)));
}

void mask(QmiMessage& message) {
  message.masked = true;
  const PersonalRow* row = personal_row(message);
  if (!message.is_personal || !row || !message.fields.is_object()) return;
  for (std::string_view name : row->fields) {
    auto field = message.fields.find(name);
    if (field != message.fields.end()) *field = kMasked;
  }
}

std::string hex_of(const QmiMessage& message) {
  if (!message.masked || !message.is_personal) return to_hex(message.packet);
  size_t tlvs = message.packet.size() - qmi_idl::kHeaderSize;
  return to_hex(part(message.packet, 0, qmi_idl::kHeaderSize)) + masked_hex(tlvs);
}

std::optional<QmiMessage> MessageReader::read(const std::string& service, uint64_t client,
                                              View packet) {
  QmiMessage message;
  message.service = modem::find_service(std::string_view(service));
  auto header = qmi_idl::load_header(packet);
  if (!message.service || !header) return std::nullopt;
  message.header = *header;
  message.packet.assign(packet.begin(), packet.end());
  message.name = modem::message_name(*message.service, direction(message), header->message_id);
  View tlvs = packet.subspan(qmi_idl::kHeaderSize);
  message.fields = Json(modem::fields_of(*message.service, *header, tlvs));
  message.is_personal = is_personal(message, client);
  return message;
}

// A message that does not match its description may hold anything, and so may the response to a
// personal request, even when it names another item.
bool MessageReader::is_personal(const QmiMessage& message, uint64_t client) {
  if (direction(message) == Direction::indication) return false;
  const PersonalRow* row = personal_row(message);
  bool own = row && (!row->by_item || !message.fields.is_object() ||
                     is_about_personal_item(message.fields));
  auto& transactions = personal_[{message.service, client}];
  uint16_t transaction = message.header.transaction;
  if (direction(message) == Direction::response) {
    return own || transactions.count(transaction) != 0;
  }
  transactions.erase(transaction);
  if (own) transactions.insert(transaction);
  return own;
}

bool is_block_save_result(const std::string& name, const Json& fields) {
  if (name != "hob" || !fields.is_object()) return false;
  auto state = fields.find("state");
  return state != fields.end() && *state != kBlockReady;
}

}  // namespace qorextctl
