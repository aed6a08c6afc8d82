// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/threads.h"

#include <errno.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <system_error>

#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {
namespace {

[[noreturn]] void throw_errno() { throw std::system_error(errno, std::generic_category()); }

}  // namespace

StopEvent::StopEvent() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) throw_errno();
}

// The event is never read again, so it stays readable for threads that begin to wait later.
void StopEvent::set() { eventfd_write(event_.get(), 1); }

// poll() ignores a negative descriptor. The event has priority: a packet that arrives during a stop
// is not read.
Ready StopEvent::wait(int fd, qmi_transport::Deadline deadline) const {
  pollfd sources[] = {{event_.get(), POLLIN, 0}, {fd, POLLIN, 0}};
  int ready = 0;
  do {
    ready = poll(sources, 2, qmi_transport::poll_timeout(deadline));
  } while (ready < 0 && errno == EINTR);
  if (sources[0].revents != 0) return Ready::stopped;
  return ready == 0 ? Ready::timed_out : Ready::readable;
}

ReadGate::ReadGate(int channel, int stop)
    : channel_(channel), epoll_(epoll_create1(EPOLL_CLOEXEC)) {
  bool is_ready = epoll_ && qmi_transport::add_to_epoll(epoll_.get(), channel, 0) &&
                  qmi_transport::add_to_epoll(epoll_.get(), stop, 0);
  if (!is_ready) throw_errno();
}

// Changing the events also wakes a thread that is already in epoll_wait(). epoll is
// level-triggered: a packet that came while the gate was shut and is not read yet ends the wait
// when it opens.
void ReadGate::set_open(bool is_open) {
  if (is_open == is_open_) return;
  is_open_ = is_open;
  uint32_t events = is_open ? uint32_t{EPOLLIN} : 0;
  qmi_transport::change_in_epoll(epoll_.get(), channel_, 0, events);
}

// The events are not returned: the caller finds out by receiving from the channel.
void ReadGate::wait() const {
  epoll_event event{};
  while (epoll_wait(epoll_.get(), &event, 1, -1) < 0 && errno == EINTR) {
  }
}

}  // namespace qmi_cci
