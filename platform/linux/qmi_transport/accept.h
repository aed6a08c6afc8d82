// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "platform/linux/qmi_transport/scoped_fd.h"

namespace qmi_transport {

struct Accepted {
  ScopedFd socket;            // non-blocking; empty when there is no connection
  bool is_exhausted = false;  // one is waiting, but no descriptor or no memory is left for it
};

Accepted accept_from(int listener);

// How long a listening socket is not looked at once accepting has failed for want of descriptors:
// it stays readable, and nobody may be about to close one.
constexpr std::chrono::milliseconds kAcceptPause{100};

}  // namespace qmi_transport
