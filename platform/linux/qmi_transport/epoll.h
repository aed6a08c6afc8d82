// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/epoll.h>

#include <cstdint>

namespace qmi_transport {

inline bool control_epoll(int epoll, int operation, int fd, uint64_t key, uint32_t events) {
  epoll_event event{};
  event.events = events;
  event.data.u64 = key;
  return epoll_ctl(epoll, operation, fd, &event) == 0;
}

// Adds a descriptor for reading; its events carry the key. False on failure (errno is set).
inline bool add_to_epoll(int epoll, int fd, uint64_t key) {
  return control_epoll(epoll, EPOLL_CTL_ADD, fd, key, EPOLLIN);
}

// What a descriptor that was added is looked at for from now on; 0: nothing but its end.
inline bool change_in_epoll(int epoll, int fd, uint64_t key, uint32_t events) {
  return control_epoll(epoll, EPOLL_CTL_MOD, fd, key, events);
}

}  // namespace qmi_transport
