// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/exchange.h"

namespace qmi_cci {
namespace {

using qmi_idl::WireType;

// Does not use load_header(), which refuses a response whose length contradicts its header: the
// sender of such a response fails at once instead of waiting for its timeout.
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

// Notifies under the owner's lock: the sender destroys the exchange as soon as it gets the lock.
void complete_with(Exchange& exchange, int result) {
  exchange.result = result;
  exchange.changed.notify_one();
}

}  // namespace

// A list is enough: a client has few exchanges at a time.
Exchange* ExchangeTable::find(uint16_t transaction) {
  Exchange* exchange = first_;
  while (exchange != nullptr && exchange->transaction != transaction) exchange = exchange->next;
  return exchange;
}

// Ids are reused as late as possible, so that a late response does not match a new exchange.
void ExchangeTable::add(Exchange& exchange) {
  do {
    ++last_transaction_;
  } while (last_transaction_ == 0 || find(last_transaction_) != nullptr);
  exchange.transaction = last_transaction_;
  exchange.next = first_;
  first_ = &exchange;
}

void ExchangeTable::remove(Exchange& exchange) {
  Exchange** link = &first_;
  while (*link != &exchange) link = &(*link)->next;
  *link = exchange.next;
}

Exchange* ExchangeTable::find_waiting(std::span<const uint8_t> packet) {
  auto transaction = transaction_of(packet);
  Exchange* exchange = transaction ? find(*transaction) : nullptr;
  return exchange == nullptr || exchange->result ? nullptr : exchange;
}

// Decodes under the owner's lock: the structure is the caller's, and without the lock the sender
// could time out and return while it is written.
void ExchangeTable::complete(std::span<const uint8_t> packet) {
  Exchange* exchange = find_waiting(packet);
  if (exchange == nullptr) return;
  complete_with(*exchange, decode_response(packet, *exchange) ? QMI_NO_ERR : QMI_MALFORMED_ERR);
}

void ExchangeTable::complete_as_malformed(std::span<const uint8_t> packet) {
  Exchange* exchange = find_waiting(packet);
  if (exchange != nullptr) complete_with(*exchange, QMI_MALFORMED_ERR);
}

// Includes exchanges whose sender is still sending. It checks the result when it is done.
void ExchangeTable::fail_all(int result) {
  for (Exchange* exchange = first_; exchange != nullptr; exchange = exchange->next) {
    if (!exchange->result) complete_with(*exchange, result);
  }
}

// Skips exchanges that are complete, or whose sender is still sending and tries to claim the role
// itself when it is done.
bool ExchangeTable::wake_sender() {
  for (Exchange* exchange = first_; exchange != nullptr; exchange = exchange->next) {
    if (exchange->result || !exchange->can_read) continue;
    exchange->changed.notify_one();
    return true;
  }
  return false;
}

}  // namespace qmi_cci
