// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <span>

namespace qmi_cci {

// A packet in one piece of memory of its own.
class QueuedPacket {
 public:
  struct Free {
    void operator()(QueuedPacket* packet) const;
  };
  using Ptr = std::unique_ptr<QueuedPacket, Free>;

  // Null when there is no memory.
  static Ptr copy(std::span<const uint8_t> bytes);

  std::span<uint8_t> bytes() { return {reinterpret_cast<uint8_t*>(this + 1), size_}; }
  // In bytes: what the packet takes of the heap, the allocator's own share included.
  size_t cost() const;

 private:
  friend class PacketList;

  explicit QueuedPacket(size_t size) : size_(size) {}

  QueuedPacket* next_ = nullptr;
  size_t size_;
};

// Packets in the order in which they were appended.
class PacketList {
 public:
  PacketList() = default;
  PacketList(const PacketList&) = delete;
  PacketList& operator=(const PacketList&) = delete;
  ~PacketList();

  void append(QueuedPacket::Ptr packet);
  // The list must not be empty.
  QueuedPacket::Ptr take_first();

  bool empty() const { return first_ == nullptr; }
  // The sum of the packets' costs.
  size_t cost() const { return cost_; }

 private:
  QueuedPacket* first_ = nullptr;
  QueuedPacket** end_ = &first_;
  size_t cost_ = 0;
};

}  // namespace qmi_cci
