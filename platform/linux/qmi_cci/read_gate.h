// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/qmi_transport/descriptors.h"

namespace qmi_cci {

// Where the thread that reads for all waits for packets. While a sender reads the gate is shut, so
// that a packet does not wake the thread as well.
class ReadGate {
 public:
  // Open. `stop` becomes readable to end the waiting. Throws std::system_error when there is no
  // descriptor to be had.
  ReadGate(int channel, int stop);

  // Not to be called by two threads at a time.
  void open() { let_through(true); }
  void shut() { let_through(false); }

  // Until there is something to read while the gate is open, the peer is gone (whatever the gate),
  // or `stop` is readable.
  void wait() const;

 private:
  void let_through(bool is_open);

  int channel_;
  qmi_transport::ScopedFd epoll_;
  bool is_open_ = true;
};

}  // namespace qmi_cci
