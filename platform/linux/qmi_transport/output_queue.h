// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <functional>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

// The packets that a client has not read yet. With a queue for each client, one that does not read
// does not block the server.
class OutputQueue {
 public:
  // Sends one packet without waiting. `nothing`: the receiver has no room for it.
  using Send = std::function<Status(std::span<const uint8_t> packet)>;

  bool empty() const { return packets_.empty(); }
  // Includes a fixed overhead for each packet.
  size_t bytes() const { return bytes_; }

  // Sends the packet, or appends it to the queue when it cannot be sent now. `nothing`: the queue
  // would exceed `limit` bytes. `gone` and `failed` are those of `send`.
  Status put(std::span<const uint8_t> packet, size_t limit, const Send& send);
  // Sends queued packets until the receiver is full. `nothing`: packets are left. A packet whose
  // send fails is dropped.
  Status flush(const Send& send);

  // Whether packets wait and none has been sent for this long.
  bool is_stuck(std::chrono::milliseconds time) const {
    return !empty() && std::chrono::steady_clock::now() - progress_ >= time;
  }

 private:
  std::deque<std::vector<uint8_t>> packets_;
  size_t bytes_ = 0;
  Deadline progress_{};  // when the last packet was sent, or the first one was queued
};

// Decides whether more can be sent to several clients: at the speed of the slowest one that reads.
// A client that has stopped reading does not count.
class Pace {
 public:
  void add(const OutputQueue& queue);
  bool has_room() const { return has_empty_ && !has_draining_; }

 private:
  bool has_empty_ = false;
  bool has_draining_ = false;
};

}  // namespace qmi_transport
