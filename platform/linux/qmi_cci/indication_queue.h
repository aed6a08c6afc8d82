// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/linux/qmi_cci/queued_packet.h"
#include "qmi_client.h"

namespace qmi_cci {

// Indications between the thread that reads them and the one that calls back, which may take long.
//
// The memory for them is bounded. An indication that does not fit is dropped, and so are those that
// follow until half of what was queued has been called back: the gap is in one place. One that
// there is no memory for is dropped by itself. What is dropped until that half has been called back
// is one burst, and its end is one line in the log with the number dropped.
class IndicationQueue {
 public:
  // `bound` in bytes of memory, with the allocator's share.
  explicit IndicationQueue(size_t bound) : bound_(bound) {}

  // Never waits for a callback.
  void push(std::span<const uint8_t> packet);
  // Calls back for each indication, in their order, until stop().
  void call_back(qmi_client_type client, qmi_client_ind_cb callback, void* callback_data);
  // What is still queued is dropped without a line.
  void stop();
  // Ends the burst under way, if there is one.
  void report_burst();

 private:
  struct Burst {
    size_t dropped = 0;
    const char* cause = nullptr;  // of the first drop
    size_t queued = 0;            // when it began
  };
  using Lock = std::unique_lock<std::mutex>;

  // Of these the caller holds the lock.
  bool has_room_again() const { return packets_.cost() <= burst_.queued / 2; }
  // Why the packet cannot be queued; null when it is.
  const char* refuse(std::span<const uint8_t> packet);
  void drop(const char* cause);
  void wait_for_packet(Lock& lock);

  // Null after stop().
  QueuedPacket::Ptr pop();
  // Not under the lock: writing to the log may take long.
  void report(const Burst& burst) const;

  const size_t bound_;
  std::mutex mutex_;
  std::condition_variable changed_;
  PacketList packets_;
  size_t highest_cost_ = 0;  // since memory was given back
  Burst burst_;              // the one under way when `dropped` is not 0
  bool stopped_ = false;
};

}  // namespace qmi_cci
