// SPDX-License-Identifier: Apache-2.0
// The rules of QRTR, on which any socket may send to any other, across processes.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "platform/linux/qmi_transport/qrtr_socket.h"
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

using qmi_transport::qrtr_send;
using qmi_transport::qrtr_socket;
using qmi_transport::QrtrAddress;

class Qrtr : public Clients, public testing::Test {
 protected:
  Qrtr() : Clients(TransportKind::qrtr) {}

  static QrtrAddress address_of(int socket) {
    sockaddr_qrtr own{};
    socklen_t length = sizeof(own);
    EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
    return {own.sq_node, own.sq_port};
  }
};

TEST_F(Qrtr, AChannelSkipsPacketsOfOtherSenders) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto channel = open();
  ASSERT_NE(channel, nullptr);
  Bytes buffer(qmi_transport::kMaxPacketSize);
  while (wait_for(channel->fd(), POLLIN, in(0ms))) {
    EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
  }

  ScopedFd stranger = qrtr_socket();
  auto bye = qmi_transport::encode_control({QRTR_TYPE_DEL_SERVER, present().at(0)});
  for (const Bytes& packet : {Bytes{1, 2, 3}, Bytes(bye.begin(), bye.end())}) {
    auto to = address_of(channel->fd());
    ASSERT_EQ(qrtr_send(stranger.get(), to, packet, in(kTimeout)), Status::ok);
    ASSERT_TRUE(wait_for(channel->fd(), POLLIN, in(kTimeout)));
    EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
  }
  expect_echo(*channel, {7});
}

TEST_F(Qrtr, AServerAcceptsAnySenderAsAClient) {
  ScriptedModem modem(endpoint());
  modem.publish(kService, kInstance);
  ServerAddress server = present().at(0);
  ScopedFd stranger = qrtr_socket();
  QrtrAddress to{server.node, server.port};
  ASSERT_EQ(qrtr_send(stranger.get(), to, Bytes(20, 0xFF), in(kTimeout)), Status::ok);
  EXPECT_TRUE(eventually([&] { return modem.request_count() == 1; }));
  stranger = ScopedFd();
  EXPECT_TRUE(eventually([&] { return modem.peers_gone() == 1; }));
}

TEST_F(Qrtr, AServiceIsVisibleToOtherProcessesUntilItsProcessEnds) {
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    auto server = qmi_transport::serve(endpoint());
    server->publish(kService, kInstance);
    for (;;) pause();
  }
  EXPECT_TRUE(eventually([&] { return present().size() == 1; }));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(eventually([&] { return present().empty(); }));
}

}  // namespace
}  // namespace transport_test
