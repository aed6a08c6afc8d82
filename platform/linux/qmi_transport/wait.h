// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

inline Deadline in(std::chrono::milliseconds time) {
  return std::chrono::steady_clock::now() + time;
}

// The time left in milliseconds as poll() takes it: rounded up, 0 when the deadline has passed.
int poll_timeout(Deadline deadline);

// Waits until one of poll()'s `events` (or an error) is there; false when the deadline passed.
bool wait_for(int fd, short events, Deadline deadline);

// A receiving call without MSG_DONTWAIT waits from now on, for `time` at most. False on failure
// (errno is set).
bool set_receive_timeout(int socket, std::chrono::milliseconds time);

}  // namespace qmi_transport
