// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_script.h"

#include <algorithm>

namespace qorextctl {

namespace {

using qmi_idl::WireType;

bool is_of(const QmiMessage& message, WireType type) { return message.header.type == type; }

bool same_kind(const QmiMessage& left, const QmiMessage& right) {
  return left.service == right.service && left.header.type == right.header.type &&
         left.header.message_id == right.header.message_id;
}

bool same_content(const QmiMessage& left, const QmiMessage& right) {
  return same_kind(left, right) &&
         std::equal(left.packet.begin() + qmi_idl::kHeaderSize, left.packet.end(),
                    right.packet.begin() + qmi_idl::kHeaderSize, right.packet.end());
}

bool is_parent_request(const Event& event) {
  const auto* frame = std::get_if<FrameEvent>(&event.what);
  return frame && frame->kind == FrameKind::request;
}

uint64_t client_of(const Event& event) { return std::get<MessageEvent>(event.what).client; }

}  // namespace

ReplayScript::ReplayScript(const Recording& recording)
    : recording_(recording), matched_(recording.events.size()) {
  MessageReader reader;
  for (const Event& event : recording.events) {
    const auto* sent = std::get_if<MessageEvent>(&event.what);
    messages_.push_back(sent ? reader.read(sent->service, sent->client, sent->packet)
                             : std::nullopt);
  }
  for (size_t i = 0; i < messages_.size(); ++i) requests_.push_back(find_request_of(i));
}

// A response with another transaction is a faulty response to the last request.
std::optional<size_t> ReplayScript::find_request_of(size_t response) const {
  const auto& answer = messages_[response];
  if (!answer || !is_of(*answer, WireType::response)) return std::nullopt;
  std::optional<size_t> last;
  for (size_t i = response; i-- > 0;) {
    const auto& request = messages_[i];
    bool fits = request && is_of(*request, WireType::request) &&
                request->service == answer->service &&
                client_of(events()[i]) == client_of(events()[response]);
    if (fits && request->header.transaction == answer->header.transaction) return i;
    if (fits && !last) last = i;
  }
  return last;
}

bool ReplayScript::is_open_request(size_t event) const {
  return messages_[event] && is_of(*messages_[event], WireType::request) && !matched_[event];
}

size_t ReplayScript::next_parent_request() const {
  auto from = events().begin() + static_cast<ptrdiff_t>(std::min(position_ + 1, events().size()));
  return static_cast<size_t>(std::find_if(from, events().end(), is_parent_request) -
                             events().begin());
}

template <class Fits>
std::optional<size_t> ReplayScript::find(size_t begin, size_t end, Fits fits) const {
  for (size_t i = begin; i < end; ++i) {
    if (is_open_request(i) && fits(*messages_[i])) return i;
  }
  return std::nullopt;
}

std::optional<size_t> ReplayScript::match(const QmiMessage& request) {
  auto equal = [&](const QmiMessage& message) { return same_content(message, request); };
  auto alike = [&](const QmiMessage& message) { return same_kind(message, request); };
  size_t end = next_parent_request();
  auto found = find(position_, end, equal);
  if (!found) found = find(position_, end, alike);
  if (!found) found = find(end, messages_.size(), equal);
  if (found) matched_[*found] = true;
  return found;
}

bool ReplayScript::is_early(size_t event) const {
  return find(position_, event, [](const QmiMessage&) { return true; }).has_value();
}

Bytes ReplayScript::answer(size_t response, uint16_t transaction) const {
  Bytes packet = messages_[response]->packet;
  qmi_idl::Header header = messages_[response]->header;
  uint16_t recorded = messages_[*requests_[response]]->header.transaction;
  header.transaction = static_cast<uint16_t>(transaction ^ recorded ^ header.transaction);
  qmi_idl::store_header(header, std::span<uint8_t, qmi_idl::kHeaderSize>(packet));
  return packet;
}

}  // namespace qorextctl
