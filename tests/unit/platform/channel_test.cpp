// SPDX-License-Identifier: Apache-2.0
// Channels between clients and their server, over every transport.
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

// With a modem that sends every packet back.
class Channels : public Transport {
 protected:
  Channels() { modem_->publish(kService, kInstance); }

  std::unique_ptr<ScriptedModem> modem_ = std::make_unique<ScriptedModem>(endpoint(), echo);
};

TEST_P(Channels, CarryPacketsBothWaysUnchanged) {
  const Bytes packet = {0, 1, 0, 8, 0, 2, 0, 0, 0xFF};
  expect_echo(*open(), packet);
  EXPECT_EQ(modem_->requests()[0].packet, packet);
  EXPECT_EQ(modem_->requests()[0].service, kService);
}

TEST_P(Channels, CarryTheLargestPacket) {
  Bytes packet(GetParam() == TransportKind::qrtr ? 65535 : qmi_transport::kMaxPacketSize);
  for (size_t i = 0; i < packet.size(); ++i) packet[i] = static_cast<uint8_t>(i * 7);
  expect_echo(*open(), packet);
}

TEST_P(Channels, StayUsableAfterAPacketLongerThanTheBuffer) {
  auto channel = open();
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
    expect_echo(*channel, {7});
  }
}

TEST_P(Channels, KeepThePacketsOfOneSenderInOrder) {
  auto channel = open();
  constexpr uint8_t kPackets = 200;
  std::thread sender([&] {
    for (uint8_t i = 0; i < kPackets; ++i) EXPECT_EQ(send(*channel, {i}), Status::ok);
  });
  for (uint8_t i = 0; i < kPackets; ++i) EXPECT_EQ(receive(*channel), Answer(Status::ok, {i}));
  sender.join();
}

TEST_P(Channels, HaveNothingToReadWhenNothingWasSent) {
  auto channel = open();
  Bytes buffer(qmi_transport::kMaxPacketSize);
  EXPECT_TRUE(eventually([&] {
    return !wait_for(channel->fd(), POLLIN, in(0ms)) ||
           channel->receive(buffer).status == Status::nothing;
  }));
  EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
}

TEST_P(Channels, WaitForAPacketInTheReceivingCallForALimitedTime) {
  auto channel = open();
  Bytes buffer(qmi_transport::kMaxPacketSize);
  // Packets of the name service may still come. The caller gets `nothing` for them.
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

TEST_P(Channels, CannotBeOpenedToAServerThatIsNotThere) {
  ServerAddress absent = present()[0];
  absent.port += 1000;
  EXPECT_EQ(qmi_transport::open_channel(endpoint(), absent), nullptr);
}

TEST_P(Channels, CarryTheAnswersOfTheirOwnClient) {
  std::vector<std::unique_ptr<Channel>> channels;
  for (uint8_t i = 0; i < 5; ++i) {
    channels.push_back(open());
    ASSERT_EQ(send(*channels.back(), {i}), Status::ok);
  }
  for (uint8_t i = 0; i < 5; ++i) EXPECT_EQ(receive(*channels[i]), Answer(Status::ok, {i}));
}

TEST_P(Channels, ReachAllClientsOfAService) {
  modem_->publish(kOtherService, kInstance);
  auto first = open();
  auto second = open();
  auto other = open(kOtherService);
  for (auto* channel : {&first, &second, &other}) expect_echo(**channel, {1});
  modem_->run([](Server& server) {
    EXPECT_EQ(server.peers(kService).size(), 2u);
    for (Peer peer : server.peers(kService)) server.send(peer, Bytes{9});
  });
  EXPECT_EQ(receive(*first), Answer(Status::ok, {9}));
  EXPECT_EQ(receive(*second), Answer(Status::ok, {9}));
  EXPECT_EQ(receive(*other, 50ms).first, Status::nothing);
}

TEST_P(Channels, ReportTheEndOfAClientToTheServer) {
  auto channel = open();
  expect_echo(*channel, {1});
  Peer peer = modem_->requests()[0].peer;
  channel.reset();
  EXPECT_TRUE(eventually([&] { return modem_->peers_gone() == 1; }));
  modem_->run([peer](Server& server) {
    EXPECT_TRUE(server.peers(kService).empty());
    EXPECT_EQ(server.send(peer, Bytes{1}), Status::gone);
  });
}

TEST_P(Channels, EndWhenTheirOwnServiceIsWithdrawn) {
  modem_->publish(kOtherService, kInstance);
  auto ended = open();
  auto other = open(kOtherService);
  modem_->withdraw(kService);
  EXPECT_EQ(receive(*ended).first, Status::gone);
  expect_echo(*other, {1});
}

TEST_P(Channels, RefuseToSendToAWithdrawnService) {
  auto channel = open();
  modem_->withdraw(kService);
  EXPECT_EQ(send(*channel, {1}), Status::gone);
  EXPECT_EQ(send(*channel, {1}), Status::gone);
}

TEST_P(Channels, EndWithTheServer) {
  auto channel = open();
  modem_.reset();
  EXPECT_EQ(receive(*channel).first, Status::gone);
}

TEST_P(Channels, ServeNewClientsOfAServiceThatIsPublishedAgain) {
  ServerAddress before = present()[0];
  modem_->withdraw(kService);
  EXPECT_TRUE(present().empty());
  modem_->publish(kService, kInstance);
  // The kernel may assign the same port again, which is then the new server's.
  bool is_reachable = qmi_transport::open_channel(endpoint(), before) != nullptr;
  EXPECT_EQ(is_reachable, before == present()[0]);
  expect_echo(*open(), {1});
}

TEST_P(Channels, LeaveNoDescriptorOpen) {
  modem_.reset();
  Resources before = own_resources();
  for (int i = 0; i < 20; ++i) {
    ScriptedModem modem(endpoint(), echo);
    modem.publish(kService, kInstance);
    auto names = watch();
    auto channel = open();
    ASSERT_NE(channel, nullptr);
    modem.withdraw(kService);
    EXPECT_EQ(open(), nullptr);
  }
  EXPECT_EQ(own_resources().descriptors, before.descriptors);
}

INSTANTIATE_TEST_SUITE_P(Over, Channels, every_transport(), kind_name);

}  // namespace
}  // namespace transport_test
