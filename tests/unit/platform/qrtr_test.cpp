// SPDX-License-Identifier: Apache-2.0
// QRTR's own rules: a network in which anybody may send to anybody, across processes.
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "platform/linux/qmi_transport/qrtr_socket.h"
#include "platform/linux/qmi_transport/wait.h"
#include "tests/unit/platform/scripted_modem.h"

namespace {

using namespace test_support;
using namespace qmi_transport;

constexpr uint32_t kService = 0xE7;
constexpr uint32_t kInstance = 1;

class Qrtr : public testing::Test {
 protected:
  static QrtrAddress address_of(int socket) {
    sockaddr_qrtr own{};
    socklen_t length = sizeof(own);
    EXPECT_EQ(getsockname(socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
    return {own.sq_node, own.sq_port};
  }

  std::vector<ServerAddress> present() const {
    std::vector<ServerAddress> servers;
    auto names = watch_service(place_.endpoint(), kService, 1);
    Announcement told{};
    while (wait_for(names->fd(), POLLIN, in(kPatience)) && names->next(told) == Status::ok) {
      if (told.kind == Announcement::Kind::end_of_list) break;
      servers.push_back(told.server);
    }
    return servers;
  }

  ModemPlace place_{TransportKind::qrtr};
};

TEST_F(Qrtr, AChannelPassesOverPacketsOfOthers) {
  ScriptedModem modem(place_.endpoint(), [](Server& server, const Request& request) {
    server.send(request.peer, request.packet);
  });
  modem.publish(kService, kInstance);
  auto channel = open_channel(place_.endpoint(), present().at(0));
  ASSERT_NE(channel, nullptr);
  Bytes buffer(kMaxPacketSize);
  while (wait_for(channel->fd(), POLLIN, in(std::chrono::milliseconds(0)))) {
    EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
  }

  ScopedFd stranger = qrtr_socket();
  auto bye = encode_control({QRTR_TYPE_DEL_SERVER, present().at(0)});
  for (const Bytes& packet : {Bytes{1, 2, 3}, Bytes(bye.begin(), bye.end())}) {
    auto to = address_of(channel->fd());
    ASSERT_EQ(qrtr_send(stranger.get(), to, packet, in(kPatience)), Status::ok);
    ASSERT_TRUE(wait_for(channel->fd(), POLLIN, in(kPatience)));
    EXPECT_EQ(channel->receive(buffer).status, Status::nothing);
  }
  EXPECT_EQ(channel->send(Bytes{7}, in(kPatience)), Status::ok);
  ASSERT_TRUE(wait_for(channel->fd(), POLLIN, in(kPatience)));
  EXPECT_EQ(channel->receive(buffer).size, 1u);
}

TEST_F(Qrtr, AServerTakesAnySenderForAClient) {
  ScriptedModem modem(place_.endpoint());
  modem.publish(kService, kInstance);
  ServerAddress server = present().at(0);
  ScopedFd stranger = qrtr_socket();
  QrtrAddress to{server.node, server.port};
  ASSERT_EQ(qrtr_send(stranger.get(), to, Bytes(20, 0xFF), in(kPatience)), Status::ok);
  EXPECT_TRUE(eventually([&] { return modem.request_count() == 1; }));
  stranger = ScopedFd();
  EXPECT_TRUE(eventually([&] { return modem.peers_gone() == 1; }));
}

TEST_F(Qrtr, AServiceIsSeenByOtherProcessesUntilItsProcessEnds) {
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    auto server = serve(place_.endpoint());
    server->publish(kService, kInstance);
    for (;;) pause();
  }
  EXPECT_TRUE(eventually([&] { return present().size() == 1; }));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(eventually([&] { return present().empty(); }));
}

}  // namespace
