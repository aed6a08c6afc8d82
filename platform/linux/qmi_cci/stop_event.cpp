// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/stop_event.h"

#include <errno.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <system_error>

#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {

StopEvent::StopEvent() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) throw std::system_error(errno, std::generic_category());
}

void StopEvent::set() { eventfd_write(event_.get(), 1); }

Ready StopEvent::wait(int fd, qmi_transport::Deadline deadline) const {
  pollfd sources[] = {{event_.get(), POLLIN, 0}, {fd, POLLIN, 0}};
  int ready = 0;
  do {
    ready = poll(sources, 2, qmi_transport::poll_timeout(deadline));
  } while (ready < 0 && errno == EINTR);
  if (sources[0].revents != 0) return Ready::stopped;
  return ready == 0 ? Ready::timed_out : Ready::readable;
}

}  // namespace qmi_cci
