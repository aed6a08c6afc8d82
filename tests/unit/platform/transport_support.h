// SPDX-License-Identifier: Apache-2.0
// Fixtures for tests of the transports.
#pragma once

#include <poll.h>

#include "platform/linux/qmi_transport/wait.h"
#include "tests/unit/platform/scripted_modem.h"

namespace transport_test {

using namespace test_support;
using namespace std::chrono_literals;
using qmi_transport::Announcement;
using qmi_transport::Channel;
using qmi_transport::in;
using qmi_transport::Peer;
using qmi_transport::ScopedFd;
using qmi_transport::Server;
using qmi_transport::ServerAddress;
using qmi_transport::Status;
using qmi_transport::wait_for;

constexpr uint32_t kService = 0xE7;
constexpr uint32_t kOtherService = 0xE8;
constexpr uint32_t kVersion = 1;
constexpr uint32_t kInstance = 1;        // instance number 0 of version 1
constexpr uint32_t kSecond = 0x100 | 1;  // instance number 1 of version 1

inline void echo(Server& server, const Request& request) {
  server.send(request.peer, request.packet);
}

using Answer = std::pair<Status, Bytes>;

// Clients of the modem at one endpoint.
class Clients {
 protected:
  explicit Clients(TransportKind kind) : place_(kind) {}

  const qmi_transport::Endpoint& endpoint() const { return place_.endpoint(); }

  std::unique_ptr<qmi_transport::ServiceWatch> watch(uint32_t service = kService,
                                                     uint32_t version = kVersion) const {
    return qmi_transport::watch_service(endpoint(), service, version);
  }

  // The next announcement, or nullopt when none comes in time or the name service has gone away.
  static std::optional<Announcement> next_announcement(qmi_transport::ServiceWatch& watch) {
    auto deadline = in(kTimeout);
    Announcement announcement{};
    while (wait_for(watch.fd(), POLLIN, deadline)) {
      Status status = watch.next(announcement);
      if (status == Status::ok) return announcement;
      if (status != Status::nothing) return std::nullopt;
    }
    return std::nullopt;
  }

  std::vector<ServerAddress> present(uint32_t service = kService,
                                     uint32_t version = kVersion) const {
    std::vector<ServerAddress> servers;
    auto names = watch(service, version);
    if (names == nullptr) return servers;
    while (auto announcement = next_announcement(*names)) {
      if (announcement->kind == Announcement::Kind::end_of_list) break;
      servers.push_back(announcement->server);
    }
    return servers;
  }

  // A channel to the first instance of the service, or null when there is none.
  std::unique_ptr<Channel> open(uint32_t service = kService) const {
    auto servers = present(service);
    return servers.empty() ? nullptr : qmi_transport::open_channel(endpoint(), servers[0]);
  }

  // The next packet or the end of the channel. `nothing` when none comes in time.
  static Answer receive(Channel& channel, std::chrono::milliseconds timeout = kTimeout) {
    Bytes buffer(qmi_transport::kMaxPacketSize);
    auto deadline = in(timeout);
    while (wait_for(channel.fd(), POLLIN, deadline)) {
      auto received = channel.receive(buffer);
      if (received.status == Status::nothing) continue;
      buffer.resize(received.size);
      return {received.status, buffer};
    }
    return {Status::nothing, {}};
  }

  static Status send(Channel& channel, const Bytes& packet) {
    return channel.send(packet, in(kTimeout));
  }

  // Sends a packet to an echoing modem and expects it back.
  static void expect_echo(Channel& channel, const Bytes& packet) {
    ASSERT_EQ(send(channel, packet), Status::ok);
    EXPECT_EQ(receive(channel), Answer(Status::ok, packet));
  }

  ModemPlace place_;
};

class Transport : public Clients, public testing::TestWithParam<TransportKind> {
 protected:
  Transport() : Clients(GetParam()) {}
};

}  // namespace transport_test
