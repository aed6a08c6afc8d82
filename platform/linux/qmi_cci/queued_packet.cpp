// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/queued_packet.h"

#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <new>

namespace qmi_cci {

void QueuedPacket::Free::operator()(QueuedPacket* packet) const { free(packet); }

QueuedPacket::Ptr QueuedPacket::copy(std::span<const uint8_t> bytes) {
  void* memory = malloc(sizeof(QueuedPacket) + bytes.size());
  if (memory == nullptr) return nullptr;
  Ptr packet(new (memory) QueuedPacket(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), packet->bytes().begin());
  return packet;
}

// The allocator keeps a word of its own before each piece.
size_t QueuedPacket::cost() const {
  return malloc_usable_size(const_cast<QueuedPacket*>(this)) + sizeof(size_t);
}

PacketList::~PacketList() {
  while (!empty()) take_first();
}

void PacketList::append(QueuedPacket::Ptr packet) {
  cost_ += packet->cost();
  *end_ = packet.release();
  end_ = &(*end_)->next_;
}

QueuedPacket::Ptr PacketList::take_first() {
  QueuedPacket::Ptr packet(first_);
  first_ = packet->next_;
  if (first_ == nullptr) end_ = &first_;
  cost_ -= packet->cost();
  return packet;
}

}  // namespace qmi_cci
