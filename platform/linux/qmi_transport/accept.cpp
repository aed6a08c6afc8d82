// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/accept.h"

#include <errno.h>
#include <sys/socket.h>

namespace qmi_transport {
namespace {

// The connection is gone, or was none; any other failure lasts.
bool is_passing(int error) {
  return error == EAGAIN || error == EINTR || error == ECONNABORTED || error == EPROTO;
}

}  // namespace

Accepted accept_from(int listener) {
  ScopedFd socket(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  bool is_exhausted = !socket && !is_passing(errno);
  return {std::move(socket), is_exhausted};
}

}  // namespace qmi_transport
