// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/read_gate.h"

#include <errno.h>

#include <system_error>

#include "platform/linux/qmi_transport/descriptors.h"

namespace qmi_cci {

ReadGate::ReadGate(int channel, int stop)
    : channel_(channel), epoll_(epoll_create1(EPOLL_CLOEXEC)) {
  bool is_made = epoll_ && qmi_transport::add_to_epoll(epoll_.get(), channel, 0) &&
                 qmi_transport::add_to_epoll(epoll_.get(), stop, 0);
  if (!is_made) throw std::system_error(errno, std::generic_category());
}

void ReadGate::let_through(bool is_open) {
  if (is_open == is_open_) return;
  is_open_ = is_open;
  epoll_event event{};
  if (is_open) event.events = EPOLLIN;
  epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, channel_, &event);
}

void ReadGate::wait() const {
  epoll_event event{};
  while (epoll_wait(epoll_.get(), &event, 1, -1) < 0 && errno == EINTR) {
  }
}

}  // namespace qmi_cci
