// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>

#include "qmi_client.h"

namespace qmi_cci {

// The memory for the indications that wait for a client's callback, in bytes of heap.
constexpr size_t kDefaultQueueBound = size_t{64} << 20;
// The smallest bound that holds an indication of the largest size and some before it.
constexpr size_t kMinQueueBound = size_t{128} << 10;

// The bound in the environment variable QOREXT_INDICATION_QUEUE, or the default when it is unset.
// Logs a value that is not a decimal number of at least kMinQueueBound and returns the default.
size_t queue_bound_from_environment();

// A packet in one heap allocation. A container would need a second one for the node, and could only
// report a lack of memory by an exception.
class QueuedPacket {
 public:
  struct Free {
    void operator()(QueuedPacket* packet) const;
  };
  using Ptr = std::unique_ptr<QueuedPacket, Free>;

  // Null when there is no memory.
  static Ptr copy(std::span<const uint8_t> bytes);

  std::span<uint8_t> bytes() { return std::span(reinterpret_cast<uint8_t*>(this + 1), size_); }
  // What the packet takes of the heap in bytes, including the allocator's share.
  size_t cost() const;

 private:
  friend class PacketList;

  explicit QueuedPacket(size_t size) : size_(size) {}

  QueuedPacket* next_ = nullptr;
  size_t size_;
};

// Packets, first in, first out.
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
  QueuedPacket** end_ = &first_;  // the link for the next packet
  size_t cost_ = 0;
};

// Passes indications from the thread that reads them to the thread that calls back, which may be
// slow.
//
// The memory is bounded. An indication that does not fit is dropped, and so are those after it
// until half of what was queued has been called back, so that the gap is in one place. An
// indication that there is no memory for is dropped alone. All that is dropped until half of the
// queue has been called back is one burst, which is logged at its end as one line with the number
// dropped.
class IndicationQueue {
 public:
  // `bound` is in bytes of heap, including the allocator's share.
  explicit IndicationQueue(size_t bound) : bound_(bound) {}

  // Queues or drops the packet. Never waits for a callback.
  void push(std::span<const uint8_t> packet);
  // Calls back for each indication, in order, until stop().
  void call_back(qmi_client_type client, qmi_client_ind_cb callback, void* callback_data);
  // Ends call_back() after the callback under way. Discards what is queued without a log line.
  void stop();
  // Ends and logs the burst under way, if there is one.
  void report_burst();

 private:
  struct Burst {
    size_t dropped = 0;
    const char* cause = nullptr;  // of the first drop
    size_t queued = 0;            // bytes, when the burst began
  };
  using Lock = std::unique_lock<std::mutex>;

  // The caller of these four holds mutex_.
  bool has_drained() const { return packets_.cost() <= burst_.queued / 2; }
  // Queues the packet and returns null, or returns why it cannot be queued.
  const char* try_queue(std::span<const uint8_t> packet);
  void drop(const char* cause);
  void wait_for_packet(Lock& lock);

  // Waits for a packet. Null after stop().
  QueuedPacket::Ptr pop();
  void log(const Burst& burst) const;

  const size_t bound_;
  std::mutex mutex_;  // protects all members below; no other lock is taken while it is held
  std::condition_variable changed_;  // a packet was queued, or stopped_; one thread waits
  PacketList packets_;
  size_t highest_cost_ = 0;  // since memory was last returned to the system
  Burst burst_;              // the one under way, if `dropped` is not 0
  bool stopped_ = false;
};

}  // namespace qmi_cci
