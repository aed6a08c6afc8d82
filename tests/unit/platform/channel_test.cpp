// SPDX-License-Identifier: Apache-2.0
// Clients and their server, over every transport.
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

class Channels : public Transport {};

TEST_P(Channels, CarriesPacketsBothWaysUnchanged) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  const Bytes packet = {0, 1, 0, 8, 0, 2, 0, 0, 0xFF};
  EXPECT_EQ(send(*channel, packet), Status::ok);
  EXPECT_EQ(receive(*channel), Answer(Status::ok, packet));
  EXPECT_EQ(modem.requests()[0].packet, packet);
  EXPECT_EQ(modem.requests()[0].service, kService);
}

TEST_P(Channels, CarriesTheLargestPacket) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  Bytes packet(largest_packet());
  for (size_t i = 0; i < packet.size(); ++i) packet[i] = static_cast<uint8_t>(i * 7);
  ASSERT_EQ(send(*channel, packet), Status::ok);
  EXPECT_EQ(receive(*channel), Answer(Status::ok, packet));
}

TEST_P(Channels, GoesOnAfterAPacketThatTheBufferHasNoRoomFor) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  const Bytes packet = {1, 2, 3, 4};
  Bytes buffer(packet.size() - 1);
  using Receive = qmi_transport::Received (Channel::*)(std::span<uint8_t>);
  for (Receive receive_one : {Receive(&Channel::receive), Receive(&Channel::receive_waiting)}) {
    ASSERT_EQ(send(*channel, packet), Status::ok);
    auto received = qmi_transport::Received{Status::nothing};
    EXPECT_TRUE(eventually([&] {
      received = ((*channel).*receive_one)(buffer);
      return received.status != Status::nothing;
    }));
    EXPECT_EQ(received.status, Status::too_long);
    EXPECT_EQ(received.size, buffer.size());
    EXPECT_EQ(buffer, Bytes({1, 2, 3}));
    ASSERT_EQ(send(*channel, {7}), Status::ok);
    EXPECT_EQ(receive(*channel), Answer(Status::ok, {7}));
  }
}

TEST_P(Channels, KeepsThePacketsOfOneSenderInOrder) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  constexpr uint8_t kPackets = 200;
  std::thread sender([&] {
    for (uint8_t i = 0; i < kPackets; ++i) EXPECT_EQ(send(*channel, {i}), Status::ok);
  });
  for (uint8_t i = 0; i < kPackets; ++i) EXPECT_EQ(receive(*channel), Answer(Status::ok, {i}));
  sender.join();
}

TEST_P(Channels, HasNothingToReadWhenNothingWasSent) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  Bytes buffer(qmi_transport::kMaxPacketSize);
  EXPECT_TRUE(eventually([&] {
    return !wait_for(channel->fd(), POLLIN, in(0ms)) ||
           channel->receive(buffer).status == Status::nothing;
  }));
  EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
}

TEST_P(Channels, WaitsForAPacketInTheReceivingCallButNotForEver) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  Bytes buffer(qmi_transport::kMaxPacketSize);
  // Packets of the name service may still come; they are not for the caller, who gets `nothing`.
  EXPECT_TRUE(eventually([&] {
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(channel->receive_waiting(buffer).status, Status::nothing);
    return std::chrono::steady_clock::now() - start >= qmi_transport::kReceiveTime / 2;
  }));

  ASSERT_EQ(send(*channel, {7, 8, 9}), Status::ok);
  qmi_transport::Received received{Status::nothing};
  EXPECT_TRUE(eventually([&] {
    received = channel->receive_waiting(buffer);
    return received.status != Status::nothing;
  }));
  EXPECT_EQ(received.status, Status::ok);
  buffer.resize(received.size);
  EXPECT_EQ(buffer, Bytes({7, 8, 9}));
}

TEST_P(Channels, RefusesAChannelToAServerThatIsNotThere) {
  ScriptedModem modem(endpoint());
  modem.publish(kService, kInstance);
  ServerAddress absent = present()[0];
  absent.port += 1000;
  EXPECT_EQ(qmi_transport::open_channel(endpoint(), absent), nullptr);
}

TEST_P(Channels, AnswersEveryClientByItself) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  std::vector<std::unique_ptr<Channel>> channels;
  for (uint8_t i = 0; i < 5; ++i) {
    channels.push_back(open());
    ASSERT_NE(channels.back(), nullptr);
    ASSERT_EQ(send(*channels.back(), {i}), Status::ok);
  }
  for (uint8_t i = 0; i < 5; ++i) EXPECT_EQ(receive(*channels[i]), Answer(Status::ok, {i}));
}

TEST_P(Channels, ReachesAllClientsOfAService) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  modem.publish(kOtherService, kInstance);
  auto first = open();
  auto second = open();
  auto other = open(kOtherService);
  for (auto* channel : {&first, &second, &other}) {
    ASSERT_EQ(send(**channel, {1}), Status::ok);
    ASSERT_EQ(receive(**channel).first, Status::ok);
  }
  modem.run([](Server& server) {
    EXPECT_EQ(server.peers(kService).size(), 2u);
    for (Peer peer : server.peers(kService)) server.send(peer, Bytes{9});
  });
  EXPECT_EQ(receive(*first), Answer(Status::ok, {9}));
  EXPECT_EQ(receive(*second), Answer(Status::ok, {9}));
  EXPECT_EQ(receive(*other, 50ms).first, Status::nothing);
}

TEST_P(Channels, TellsTheServerThatAClientIsGone) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_EQ(send(*channel, {1}), Status::ok);
  ASSERT_EQ(receive(*channel).first, Status::ok);
  Peer peer = modem.requests()[0].peer;
  channel.reset();
  EXPECT_TRUE(eventually([&] { return modem.peers_gone() == 1; }));
  modem.run([peer](Server& server) {
    EXPECT_TRUE(server.peers(kService).empty());
    EXPECT_EQ(server.send(peer, Bytes{1}), Status::gone);
  });
}

TEST_P(Channels, EndsTheChannelsOfAWithdrawnServiceOnly) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  modem.publish(kOtherService, kInstance);
  auto ended = open();
  auto other = open(kOtherService);
  modem.withdraw(kService);
  EXPECT_EQ(receive(*ended).first, Status::gone);
  EXPECT_EQ(send(*other, {1}), Status::ok);
  EXPECT_EQ(receive(*other), Answer(Status::ok, {1}));
}

TEST_P(Channels, RefusesToSendToAWithdrawnService) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  modem.withdraw(kService);
  EXPECT_EQ(send(*channel, {1}), Status::gone);
  EXPECT_EQ(send(*channel, {1}), Status::gone);
}

TEST_P(Channels, EndsItsChannelsWithTheServer) {
  auto modem = std::make_unique<ScriptedModem>(endpoint(), echo);
  modem->publish(kService, kInstance);
  auto channel = open();
  modem.reset();
  EXPECT_EQ(receive(*channel).first, Status::gone);
}

TEST_P(Channels, ServesNewClientsOfAServiceThatCameBack) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  ServerAddress before = present()[0];
  modem.withdraw(kService);
  EXPECT_TRUE(present().empty());
  modem.publish(kService, kInstance);
  // The kernel may give the same port again; then it is the new server's.
  bool is_reachable = qmi_transport::open_channel(endpoint(), before) != nullptr;
  EXPECT_EQ(is_reachable, before == present()[0]);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  EXPECT_EQ(send(*channel, {1}), Status::ok);
  EXPECT_EQ(receive(*channel), Answer(Status::ok, {1}));
}

TEST_P(Channels, HoldsNoDescriptorBehindItsObjects) {
  size_t before = own("fd");
  for (int i = 0; i < 20; ++i) {
    ScriptedModem modem(endpoint(), echo);
    modem.publish(kService, kInstance);
    auto names = watch();
    auto channel = open();
    ASSERT_NE(channel, nullptr);
    modem.withdraw(kService);
    EXPECT_EQ(open(), nullptr);
  }
  EXPECT_EQ(own("fd"), before);
}

INSTANTIATE_TEST_SUITE_P(Over, Channels, every_transport(), kind_name);

}  // namespace
}  // namespace transport_test
