// SPDX-License-Identifier: Apache-2.0
// Peers that read slowly or not at all, over every transport.
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

constexpr size_t kLarge = 60000;

class SlowPeer : public Transport {
 protected:
  // A channel that the modem knows, and which has nothing to read.
  std::unique_ptr<Channel> known_client() const {
    auto channel = open();
    EXPECT_EQ(send(*channel, {1}), Status::ok);
    EXPECT_EQ(receive(*channel), Answer(Status::ok, {1}));
    return channel;
  }

  static bool is_answered(Channel& channel) {
    return send(channel, {2}) == Status::ok && receive(channel, 5s) == Answer(Status::ok, {2});
  }
};

// Sends packets to the first client until `count` are sent or one cannot be; the last status.
Status send_many(Server& server, size_t count) {
  Peer peer = server.peers(kService).at(0);
  Status status = Status::ok;
  for (size_t i = 0; i < count && status == Status::ok; ++i) {
    status = server.send(peer, Bytes(kLarge, static_cast<uint8_t>(i)));
  }
  return status;
}

TEST_P(SlowPeer, LosesNothingAndDoesNotHoldUpTheServer) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
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

TEST_P(SlowPeer, IsDroppedWithMoreBytesWaitingThanTheLimit) {
  ScriptedModem modem(endpoint(), echo, {.queue = 10 * kLarge});
  modem.publish(kService, kInstance);
  auto deaf = known_client();
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

TEST_P(SlowPeer, IsDroppedWhenItTakesNothingForLong) {
  ScriptedModem modem(endpoint(), echo, {.stuck_after = 300ms});
  modem.publish(kService, kInstance);
  auto deaf = known_client();
  auto start = std::chrono::steady_clock::now();
  modem.run([](Server& server) { EXPECT_EQ(send_many(server, 100), Status::ok); });
  EXPECT_TRUE(eventually([&] { return modem.peers_dropped() == 1; }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
  modem.run([](Server& server) { EXPECT_TRUE(server.peers(kService).empty()); });
}

TEST_P(SlowPeer, HasNoRoomUntilItHasReadWhatWaits) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
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

TEST_P(SlowPeer, IsWaitedForByTheOthersNoLongerThanItReads) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto deaf = known_client();
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

TEST_P(SlowPeer, GivesUpSendingToAServerThatDoesNotRead) {
  ScriptedModem modem(endpoint());
  modem.publish(kService, kInstance);
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
