// SPDX-License-Identifier: Apache-2.0
#include "bench/raw_channel.h"

#include <poll.h>
#include <sys/socket.h>

#include <stdexcept>

#include "platform/linux/qmi_transport/wait.h"

namespace bench {

namespace {

using qmi_transport::Announcement;
using qmi_transport::Channel;
using qmi_transport::Status;

constexpr std::chrono::seconds kTimeout{10};
constexpr uint32_t kVersion = 1;

void check(bool is_good, const char* what) {
  if (!is_good) throw std::runtime_error(what);
}

qmi_transport::ServerAddress find_server(const qmi_transport::Endpoint& endpoint,
                                         uint32_t service) {
  auto watch = qmi_transport::watch_service(endpoint, service, kVersion);
  check(watch != nullptr, "cannot watch for the service");
  Announcement announcement{};
  while (announcement.kind != Announcement::Kind::appeared ||
         announcement.server.service != service) {
    bool is_readable = qmi_transport::wait_for(watch->fd(), POLLIN, qmi_transport::in(kTimeout));
    check(is_readable && watch->next(announcement) != Status::gone, "the service did not appear");
  }
  return announcement.server;
}

}  // namespace

std::unique_ptr<Channel> open_raw_channel(uint32_t service) {
  auto endpoint = qmi_transport::endpoint_from_environment();
  check(endpoint.has_value(), "QOREXT_MODEM does not name a modem");
  auto channel = qmi_transport::open_channel(*endpoint, find_server(*endpoint, service));
  check(channel != nullptr, "cannot connect to the service");
  check(qmi_transport::set_receive_timeout(channel->fd(), kTimeout),
        "cannot set the receive timeout");
  return channel;
}

void exchange_raw(Channel& channel, std::span<const uint8_t> packet, std::span<uint8_t> response) {
  bool is_sent = channel.send(packet, qmi_transport::in(kTimeout)) == Status::ok;
  check(is_sent && recv(channel.fd(), response.data(), response.size(), 0) > 0, "no response");
}

}  // namespace bench
