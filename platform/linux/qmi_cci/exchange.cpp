// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/exchange.h"

namespace qmi_cci {
namespace {

using qmi_idl::WireType;

// The transaction that a response answers, also when its length does not fit its header: its sender
// need not wait for the timeout.
std::optional<uint16_t> transaction_of(std::span<const uint8_t> packet) {
  if (packet.size() < 3 || packet[0] != static_cast<uint8_t>(WireType::response)) return {};
  return static_cast<uint16_t>(packet[1] | packet[2] << 8);
}

bool decode_response(std::span<const uint8_t> packet, const Exchange& exchange) {
  auto header = qmi_idl::load_header(packet);
  if (!header || header->message_id != exchange.expected.id) return false;
  return qmi_idl::decode(exchange.expected, packet.subspan(qmi_idl::kHeaderSize),
                         exchange.structure);
}

void finish(Exchange& exchange, int result) {
  exchange.result = result;
  exchange.changed.notify_one();
}

}  // namespace

Exchange* ExchangeTable::find(uint16_t transaction) {
  Exchange* exchange = first_;
  while (exchange != nullptr && exchange->transaction != transaction) exchange = exchange->next;
  return exchange;
}

void ExchangeTable::enter(Exchange& exchange) {
  do {
    ++last_transaction_;
  } while (last_transaction_ == 0 || find(last_transaction_) != nullptr);
  exchange.transaction = last_transaction_;
  exchange.next = first_;
  first_ = &exchange;
}

void ExchangeTable::leave(Exchange& exchange) {
  Exchange** link = &first_;
  while (*link != &exchange) link = &(*link)->next;
  *link = exchange.next;
}

Exchange* ExchangeTable::find_waiting(std::span<const uint8_t> packet) {
  auto transaction = transaction_of(packet);
  Exchange* exchange = transaction ? find(*transaction) : nullptr;
  return exchange == nullptr || exchange->result ? nullptr : exchange;
}

void ExchangeTable::complete(std::span<const uint8_t> packet) {
  Exchange* exchange = find_waiting(packet);
  if (exchange == nullptr) return;
  finish(*exchange, decode_response(packet, *exchange) ? QMI_NO_ERR : QMI_MALFORMED_ERR);
}

void ExchangeTable::refuse(std::span<const uint8_t> packet) {
  Exchange* exchange = find_waiting(packet);
  if (exchange != nullptr) finish(*exchange, QMI_MALFORMED_ERR);
}

void ExchangeTable::fail_all(int result) {
  for (Exchange* exchange = first_; exchange != nullptr; exchange = exchange->next) {
    if (!exchange->result) finish(*exchange, result);
  }
}

bool ExchangeTable::wake_reader() {
  for (Exchange* exchange = first_; exchange != nullptr; exchange = exchange->next) {
    if (exchange->result || !exchange->can_read) continue;
    exchange->changed.notify_one();
    return true;
  }
  return false;
}

}  // namespace qmi_cci
