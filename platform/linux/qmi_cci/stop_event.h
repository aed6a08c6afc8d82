// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_cci {

enum class Ready { readable, stopped, timed_out };

// Ends another thread's wait for a descriptor, once and for all.
class StopEvent {
 public:
  // Throws std::system_error when there is no descriptor to be had.
  StopEvent();
  void set();
  // Readable from set() on.
  int fd() const { return event_.get(); }
  // Waits for the event, for something to read from `fd` (none when negative), or for the deadline.
  Ready wait(int fd, qmi_transport::Deadline deadline) const;

 private:
  qmi_transport::ScopedFd event_;
};

}  // namespace qmi_cci
