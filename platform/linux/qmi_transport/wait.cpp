// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/wait.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

namespace qmi_transport {

int poll_timeout(Deadline deadline) {
  using std::chrono::milliseconds;
  auto now = std::chrono::steady_clock::now();
  if (deadline <= now) return 0;
  auto left = std::chrono::ceil<milliseconds>(deadline - now).count();
  return static_cast<int>(std::min<milliseconds::rep>(left, INT_MAX));
}

bool wait_for(int fd, short events, Deadline deadline) {
  pollfd one{fd, events, 0};
  int ready = 0;
  do {
    ready = poll(&one, 1, poll_timeout(deadline));
  } while (ready < 0 && errno == EINTR);
  return ready != 0;
}

// SO_RCVTIMEO has no effect on a non-blocking socket. Sends pass MSG_DONTWAIT.
bool set_receive_timeout(int socket, std::chrono::milliseconds time) {
  auto microseconds = std::chrono::microseconds(time).count();
  timeval limit{microseconds / 1'000'000, microseconds % 1'000'000};
  int flags = fcntl(socket, F_GETFL);
  return flags >= 0 && fcntl(socket, F_SETFL, flags & ~O_NONBLOCK) == 0 &&
         setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)) == 0;
}

}  // namespace qmi_transport
