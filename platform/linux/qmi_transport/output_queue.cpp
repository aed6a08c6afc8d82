// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/output_queue.h"

namespace qmi_transport {
namespace {

// What the containers take for a packet; for a small packet more than its content.
constexpr size_t kPacketCost = 64;
// A client that reads takes less for a packet, even on a loaded machine.
constexpr std::chrono::seconds kStalledAfter{1};

size_t cost_of(std::span<const uint8_t> packet) { return packet.size() + kPacketCost; }

}  // namespace

// Queues after other packets even if there is room again, to keep the order.
Status OutputQueue::put(std::span<const uint8_t> packet, size_t limit, const Send& send) {
  if (empty()) {
    Status status = send(packet);
    if (status != Status::nothing) return status;
    progress_ = std::chrono::steady_clock::now();
  }
  if (bytes_ + cost_of(packet) > limit) return Status::nothing;
  packets_.emplace_back(packet.begin(), packet.end());
  bytes_ += cost_of(packet);
  return Status::ok;
}

// `failed` does not end the loop: the packet, and not the receiver, is at fault.
Status OutputQueue::flush(const Send& send) {
  while (!empty()) {
    Status status = send(packets_.front());
    if (status == Status::nothing || status == Status::gone) return status;
    bytes_ -= cost_of(packets_.front());
    packets_.pop_front();
    progress_ = std::chrono::steady_clock::now();
  }
  return Status::ok;
}

// Waits for the slowest client that reads, so that no queue grows without a limit.
void Pace::add(const OutputQueue& queue) {
  if (queue.empty()) {
    has_empty_ = true;
  } else if (!queue.is_stuck(kStalledAfter)) {
    has_draining_ = true;
  }
}

}  // namespace qmi_transport
