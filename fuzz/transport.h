// SPDX-License-Identifier: Apache-2.0
// Shared by the targets of both transports: the checks of a server's events.
#pragma once

#include <algorithm>

#include "fuzz/support.h"
#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/transport.h"

namespace fuzz {

constexpr size_t kMaxSent = 64;
constexpr size_t kQueue = 4096;  // the bound for a client that does not read
constexpr uint32_t kServices[] = {2, 3, 0xE1};
constexpr uint32_t kVersion = 1;

inline bool is_peer(const qmi_transport::Server& server, uint32_t service,
                    qmi_transport::Peer peer) {
  auto peers = server.peers(service);
  return std::find(peers.begin(), peers.end(), peer) != peers.end();
}

// Takes the next event and checks its size and its peer. Returns false if there is none.
inline bool take_event(qmi_transport::Server& server, qmi_transport::ServerEvent& event) {
  using Kind = qmi_transport::ServerEvent::Kind;
  static Bytes buffer(qmi_transport::kMaxPacketSize);
  event = server.next(buffer);
  if (event.kind == Kind::nothing) return false;
  FUZZ_REQUIRE(event.size <= (event.kind == Kind::peer_dropped ? kQueue : kMaxSent));
  FUZZ_REQUIRE(is_peer(server, event.service, event.peer) == (event.kind == Kind::packet));
  return true;
}

inline void send_to_peers(qmi_transport::Server& server, const Bytes& packet) {
  for (uint32_t service : kServices) {
    for (qmi_transport::Peer peer : server.peers(service)) server.send(peer, packet);
  }
}

// An announcement is for the service and the version that are watched.
inline void check_announcement(const qmi_transport::Announcement& announcement, uint32_t service) {
  if (announcement.kind == qmi_transport::Announcement::Kind::end_of_list) return;
  FUZZ_REQUIRE(announcement.server.service == service);
  FUZZ_REQUIRE(qmi_transport::version_of(announcement.server.instance) == kVersion);
}

}  // namespace fuzz
