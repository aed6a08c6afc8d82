// SPDX-License-Identifier: Apache-2.0
// Peers that read slowly or not at all, over every transport.
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

constexpr size_t kLarge = 60000;

class SlowPeer : public Transport {
 protected:
  // A channel that the modem knows and that has nothing to read.
  std::unique_ptr<Channel> known_client() const {
    auto channel = open();
    expect_echo(*channel, {1});
    return channel;
  }

  // Starts an echoing modem with the service.
  ScriptedModem& start_modem(const qmi_transport::ServerLimits& limits = {}) {
    modem_.emplace(endpoint(), echo, limits);
    modem_->publish(kService, kInstance);
    return *modem_;
  }

  static bool is_answered(Channel& channel) {
    return send(channel, {2}) == Status::ok && receive(channel, 5s) == Answer(Status::ok, {2});
  }

 private:
  std::optional<ScriptedModem> modem_;
};

// Sends `count` packets to the first client. Stops at one that cannot be sent; returns the last
// status.
Status send_many(Server& server, size_t count) {
  Peer peer = server.peers(kService).at(0);
  Status status = Status::ok;
  for (size_t i = 0; i < count && status == Status::ok; ++i) {
    status = server.send(peer, Bytes(kLarge, static_cast<uint8_t>(i)));
  }
  return status;
}

TEST_P(SlowPeer, LosesNothingAndDoesNotBlockTheServer) {
  ScriptedModem& modem = start_modem();
  auto channel = known_client();
  constexpr size_t kPackets = 500;  // 30 MB, more than any socket takes
  modem.run([](Server& server) { EXPECT_EQ(send_many(server, kPackets), Status::ok); });

  auto other = open();
  ASSERT_NE(other, nullptr);
  EXPECT_TRUE(is_answered(*other));
  for (size_t i = 0; i < kPackets; ++i) {
    auto [status, packet] = receive(*channel);
    ASSERT_EQ(status, Status::ok) << i;
    ASSERT_EQ(packet, Bytes(kLarge, static_cast<uint8_t>(i)));
  }
  EXPECT_TRUE(is_answered(*channel));
}

TEST_P(SlowPeer, IsDroppedWhenMoreBytesWaitThanTheLimit) {
  ScriptedModem& modem = start_modem({.queue = 10 * kLarge});
  auto stalled = known_client();
  modem.run([](Server& server) {
    EXPECT_EQ(send_many(server, 1000), Status::gone);
    EXPECT_TRUE(server.peers(kService).empty());
  });
  EXPECT_TRUE(eventually([&] { return modem.peers_dropped() == 1; }));
  EXPECT_EQ(modem.peers_gone(), 0u);
  auto other = open();
  ASSERT_NE(other, nullptr);
  EXPECT_TRUE(is_answered(*other));
}

TEST_P(SlowPeer, IsDroppedWhenItReadsNothingForTooLong) {
  ScriptedModem& modem = start_modem({.stuck_after = 300ms});
  auto stalled = known_client();
  auto start = std::chrono::steady_clock::now();
  modem.run([](Server& server) { EXPECT_EQ(send_many(server, 100), Status::ok); });
  EXPECT_TRUE(eventually([&] { return modem.peers_dropped() == 1; }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
  modem.run([](Server& server) { EXPECT_TRUE(server.peers(kService).empty()); });
}

TEST_P(SlowPeer, HasNoRoomUntilItHasReadWhatWasSent) {
  ScriptedModem& modem = start_modem();
  modem.run([](Server& server) { EXPECT_FALSE(server.has_room(kService)); });
  auto channel = known_client();
  auto has_room = [&modem] {
    bool room = false;
    modem.run([&room](Server& server) { room = server.has_room(kService); });
    return room;
  };
  EXPECT_TRUE(has_room());
  modem.run([](Server& server) { send_many(server, 100); });
  EXPECT_FALSE(has_room());
  std::this_thread::sleep_for(1200ms);
  EXPECT_FALSE(has_room());
  for (size_t i = 0; i < 100; ++i) ASSERT_EQ(receive(*channel).first, Status::ok);
  EXPECT_TRUE(eventually(has_room));
}

TEST_P(SlowPeer, DoesNotDelayTheOthersAfterItHasStoppedReading) {
  ScriptedModem& modem = start_modem();
  auto stalled = known_client();
  auto other = known_client();
  bool has_room = true;
  modem.run([&](Server& server) {
    send_many(server, 100);
    has_room = server.has_room(kService);
  });
  EXPECT_FALSE(has_room);
  EXPECT_TRUE(eventually(
      [&] {
        modem.run([&](Server& server) { has_room = server.has_room(kService); });
        return has_room;
      },
      5s));
}

TEST_P(SlowPeer, StopsSendingToAServerThatDoesNotRead) {
  ScriptedModem& modem = start_modem();
  auto channel = open();
  modem.hold([&] {
    Bytes packet(60000);
    Status status = Status::ok;
    auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 1000 && status == Status::ok; ++i) {
      before = std::chrono::steady_clock::now();
      status = channel->send(packet, in(50ms));
    }
    EXPECT_EQ(status, Status::nothing);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 50ms);
  });
}

INSTANTIATE_TEST_SUITE_P(Over, SlowPeer, every_transport(), kind_name);

}  // namespace
}  // namespace transport_test
