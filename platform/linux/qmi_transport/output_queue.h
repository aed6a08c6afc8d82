// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <functional>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

// The packets that a client has not taken yet, so that a client that does not read holds up nobody.
class OutputQueue {
 public:
  // Sends one packet without waiting: `nothing` when there is no room for it.
  using Send = std::function<Status(std::span<const uint8_t> packet)>;

  bool empty() const { return packets_.empty(); }
  // With what each packet costs beside its content.
  size_t bytes() const { return bytes_; }

  // Sends the packet, or keeps it after those that wait already. `nothing`: more than `limit`
  // bytes would wait. `gone` and `failed` as from `send`.
  Status put(std::span<const uint8_t> packet, size_t limit, const Send& send);
  // Sends what there is room for. `nothing`: packets are left. One that cannot be sent at all is
  // dropped.
  Status flush(const Send& send);

  // Whether packets wait and none has been taken for this long.
  bool is_stuck(std::chrono::milliseconds time) const {
    return !empty() && std::chrono::steady_clock::now() - taken_ >= time;
  }

 private:
  std::deque<std::vector<uint8_t>> packets_;
  size_t bytes_ = 0;
  Deadline taken_{};  // when the last packet was sent, or the first one began to wait
};

// Paces what goes to several clients at once: by the slowest of those that read. One that has taken
// nothing for a while is not waited for, unless there is no other.
class Pace {
 public:
  void add(const OutputQueue& queue);
  bool has_room() const { return is_one_level_ && !is_one_behind_; }

 private:
  bool is_one_level_ = false;
  bool is_one_behind_ = false;
};

}  // namespace qmi_transport
