#pragma once

#include <sys/epoll.h>

#include <cstdint>

namespace qmi_transport {

// Adds a descriptor for reading; its events carry the key. False on failure (errno tells).
inline bool add_to_epoll(int epoll, int fd, uint64_t key) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = key;
  return epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event) == 0;
}

}  // namespace qmi_transport
