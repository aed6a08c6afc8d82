// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/descriptors.h"

#include <sys/socket.h>
#include <sys/timerfd.h>

#include <algorithm>

namespace qmi_transport {
namespace {

bool control_epoll(int epoll, int operation, int fd, uint64_t key, uint32_t events) {
  epoll_event event{};
  event.events = events;
  event.data.u64 = key;
  return epoll_ctl(epoll, operation, fd, &event) == 0;
}

// Errors of one call. After any other, such as EMFILE, the next accept() fails as well.
bool is_transient(int error) {
  return error == EAGAIN || error == EINTR || error == ECONNABORTED || error == EPROTO;
}

}  // namespace

bool add_to_epoll(int epoll, int fd, uint64_t key) {
  return control_epoll(epoll, EPOLL_CTL_ADD, fd, key, EPOLLIN);
}

bool change_in_epoll(int epoll, int fd, uint64_t key, uint32_t events) {
  return control_epoll(epoll, EPOLL_CTL_MOD, fd, key, events);
}

Timer::Timer() : fd_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

void Timer::start(std::chrono::nanoseconds time) {
  constexpr std::chrono::nanoseconds kMin{1};  // a time of zero would disarm the timer
  auto left = std::max(time, kMin);
  auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  itimerspec when{};
  when.it_value = {seconds.count(), (left - seconds).count()};
  timerfd_settime(fd_.get(), 0, &when, nullptr);
  is_running_ = true;
}

// A read that fails means that the timer was restarted after it had become readable.
void Timer::expire() {
  uint64_t count = 0;
  is_running_ = read(fd_.get(), &count, sizeof count) != sizeof count;
}

Accepted accept_from(int listener) {
  ScopedFd socket(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  bool is_exhausted = !socket && !is_transient(errno);
  return {std::move(socket), is_exhausted};
}

}  // namespace qmi_transport
