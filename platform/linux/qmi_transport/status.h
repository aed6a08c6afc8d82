// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <errno.h>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

// What a socket call's errno value says about the other end.
inline Status status_of(int error) {
  switch (error) {
    case EAGAIN:
      return Status::nothing;
    case EPIPE:
    case ENOTCONN:
    case ECONNRESET:
    case ENODEV:
    case ENETRESET:
    case EHOSTUNREACH:
      return Status::gone;
    default:
      return Status::failed;
  }
}

}  // namespace qmi_transport
