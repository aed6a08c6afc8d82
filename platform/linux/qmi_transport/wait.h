// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

inline Deadline in(std::chrono::milliseconds time) {
  return std::chrono::steady_clock::now() + time;
}

// The time left in milliseconds for poll(): rounded up, 0 when the deadline has passed.
int poll_timeout(Deadline deadline);

// Waits for one of poll()'s `events` or an error. False when the deadline has passed.
bool wait_for(int fd, short events, Deadline deadline);

// Makes receiving calls without MSG_DONTWAIT wait up to `time`. False on failure (errno is set).
bool set_receive_timeout(int socket, std::chrono::milliseconds time);

}  // namespace qmi_transport
