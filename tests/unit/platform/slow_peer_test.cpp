// Peers that read slowly or not at all, over every transport.
#include <atomic>

#include "transport_support.h"

namespace transport_test {
namespace {

class SlowPeer : public Transport {};

TEST_P(SlowPeer, LosesNothingToASlowReader) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_EQ(send(*channel, {1}), Status::ok);
  ASSERT_EQ(receive(*channel).first, Status::ok);

  constexpr uint32_t kPackets = 5000;
  std::atomic<uint32_t> sent = 0;
  std::thread burst([&] {
    modem.run([&sent](Server& server) {
      Peer peer = server.peers(kService).at(0);
      while (sent < kPackets) {
        Bytes packet(1000, static_cast<uint8_t>(sent));
        if (server.send(peer, packet) != Status::ok) return;
        ++sent;
      }
    });
  });
  // The server waits for the reader when it gets no further.
  EXPECT_TRUE(eventually([&] {
    uint32_t before = sent;
    std::this_thread::sleep_for(20ms);
    return sent == before && sent > 0;
  }));
  EXPECT_LT(sent, kPackets);
  uint32_t arrived = 0;
  while (arrived < kPackets) {
    auto [status, packet] = receive(*channel);
    ASSERT_EQ(status, Status::ok) << arrived;
    ASSERT_EQ(packet, Bytes(1000, static_cast<uint8_t>(arrived)));
    ++arrived;
  }
  burst.join();
}

TEST_P(SlowPeer, DropsAClientThatDoesNotReadAndServesTheOthers) {
  ScriptedModem modem(endpoint(), echo, 100ms);
  modem.publish(kService, kInstance);
  auto deaf = open();
  ASSERT_EQ(send(*deaf, {1}), Status::ok);
  ASSERT_TRUE(eventually([&] { return modem.request_count() == 1; }));
  Peer peer = modem.requests()[0].peer;
  modem.run([peer](Server& server) {
    Bytes packet(60000);
    Status status = Status::ok;
    for (int i = 0; i < 1000 && status == Status::ok; ++i) status = server.send(peer, packet);
    EXPECT_EQ(status, Status::gone);
    EXPECT_TRUE(server.peers(kService).empty());
  });
  auto other = open();
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(send(*other, {2}), Status::ok);
  EXPECT_EQ(receive(*other), Answer(Status::ok, {2}));
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
