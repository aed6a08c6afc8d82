// SPDX-License-Identifier: Apache-2.0
// The rules of the Unix socket: its file, and connections that violate the protocol.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/unix_socket.h"
#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

using qmi_transport::decode_control;
using qmi_transport::encode_control;
using qmi_transport::endpoint_from_environment;
using qmi_transport::kControlSize;
using qmi_transport::kMaxPacketSize;
using qmi_transport::parse_endpoint;
using qmi_transport::serve;
using qmi_transport::unix_address;
using qmi_transport::unix_receive;
using qmi_transport::unix_send;
using qmi_transport::unix_socket;

class UnixServer : public Clients, public testing::Test {
 protected:
  UnixServer() : Clients(TransportKind::unix_socket) {}

  const std::string path_ = place_.socket_path();

  ScopedFd connection() const { return qmi_transport::unix_connect(path_); }

  // A socket that is bound to the path but does not listen.
  ScopedFd bound_socket() const {
    ScopedFd socket = unix_socket();
    auto address = unix_address(path_);
    EXPECT_EQ(bind(socket.get(), reinterpret_cast<sockaddr*>(&*address), sizeof(*address)), 0);
    return socket;
  }

  // A connection whose first packet is this.
  ScopedFd connection_with(std::span<const uint8_t> packet) const {
    ScopedFd socket = connection();
    EXPECT_EQ(unix_send(socket.get(), packet, in(kTimeout)), Status::ok);
    return socket;
  }

  static Status read(const ScopedFd& socket) {
    Bytes buffer(kMaxPacketSize);
    EXPECT_TRUE(wait_for(socket.get(), POLLIN, in(kTimeout)));
    return unix_receive(socket.get(), buffer).status;
  }

  bool is_serving() const {
    auto names = watch();
    return names != nullptr && next_announcement(*names);
  }
};

TEST_F(UnixServer, ReplacesOneThatHasEnded) {
  bound_socket();
  ASSERT_TRUE(std::filesystem::exists(path_));
  EXPECT_NE(serve(endpoint()), nullptr);
}

TEST_F(UnixServer, DoesNotReplaceAFile) {
  std::ofstream(path_) << "content";
  EXPECT_EQ(serve(endpoint()), nullptr);
  EXPECT_EQ(content_of(path_), "content");
}

TEST_F(UnixServer, RemovesItsFileWhenItEnds) {
  auto server = serve(endpoint());
  EXPECT_TRUE(std::filesystem::exists(path_));
  server.reset();
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(UnixServer, DoesNotRemoveAFileThatHasReplacedItsOwn) {
  auto server = serve(endpoint());
  std::filesystem::remove(path_);
  std::ofstream(path_) << "content";
  server.reset();
  EXPECT_EQ(content_of(path_), "content");
}

TEST_F(UnixServer, NeedsAPathThatFitsASocketAddress) {
  qmi_transport::Endpoint far{TransportKind::unix_socket, "/tmp/" + std::string(200, 'x')};
  errno = 0;
  EXPECT_EQ(serve(far), nullptr);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_EQ(qmi_transport::watch_service(far, kService, 1), nullptr);
  EXPECT_EQ(qmi_transport::open_channel(far, {}), nullptr);
}

TEST_F(UnixServer, CannotBeReachedBeforeItIsServed) {
  errno = 0;
  EXPECT_EQ(watch(), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

// With a modem that serves the path.
class RunningUnixServer : public UnixServer {
 protected:
  // Expects a connection with this first packet to be closed, and the server to stay usable.
  void expect_closed(std::span<const uint8_t> first) {
    EXPECT_EQ(read(connection_with(first)), Status::gone) << first.size() << " bytes";
    EXPECT_TRUE(is_serving());
  }

  ScriptedModem modem_{endpoint()};
};

TEST_F(RunningUnixServer, IsNotReplaced) {
  errno = 0;
  EXPECT_EQ(serve(endpoint()), nullptr);
  EXPECT_EQ(errno, EADDRINUSE);
  EXPECT_TRUE(is_serving());
}

TEST_F(RunningUnixServer, ClosesAConnectionWhoseFirstPacketIsInvalid) {
  for (size_t size : std::vector<size_t>{0, 1, 7, 19, 20, 21, 500, 65542, 65543}) {
    expect_closed(Bytes(size, 0x55));
  }
}

TEST_F(RunningUnixServer, ClosesALookupThatSendsASecondPacket) {
  ScopedFd socket = connection_with(encode_control({QRTR_TYPE_NEW_LOOKUP, {.service = kService}}));
  EXPECT_EQ(read(socket), Status::ok);
  unix_send(socket.get(), Bytes(7), in(kTimeout));
  EXPECT_EQ(read(socket), Status::gone);
  EXPECT_TRUE(is_serving());
}

TEST_F(RunningUnixServer, DoesNotReportAConnectionThatSentNothing) {
  modem_.publish(kService, kInstance);
  connection();
  EXPECT_TRUE(is_serving());
  EXPECT_EQ(modem_.peers_gone(), 0u);
}

TEST_F(RunningUnixServer, SurvivesAFloodOfConnections) {
  std::vector<ScopedFd> flood;
  for (int i = 0; i < 400; ++i) flood.push_back(connection());
  flood.clear();
  EXPECT_TRUE(eventually([&] { return is_serving(); }));
}

TEST_F(RunningUnixServer, ConfirmsAClientWithItsOwnPacket) {
  modem_.publish(kService, kInstance);
  auto hello = encode_control({QRTR_TYPE_HELLO, {.node = 1, .port = 1}});
  ScopedFd socket = connection_with(hello);
  ASSERT_TRUE(wait_for(socket.get(), POLLIN, in(kTimeout)));
  std::array<uint8_t, kControlSize> answer{};
  EXPECT_EQ(unix_receive(socket.get(), answer).size, kControlSize);
  EXPECT_EQ(answer, hello);
}

TEST_F(UnixServer, CannotBeReachedUnlessItListens) {
  ScopedFd socket = bound_socket();
  EXPECT_EQ(qmi_transport::open_channel(endpoint(), {kService, kInstance, 1, 1}), nullptr);
}

TEST(ControlPacket, HasTheLayoutOfTheQrtrNameService) {
  auto bytes = encode_control({QRTR_TYPE_NEW_SERVER, {0xE7, 0x101, 1, 0x4001}});
  const std::array<uint8_t, 20> expected = {4, 0, 0, 0, 0xE7, 0, 0, 0,    1, 1,
                                            0, 0, 1, 0, 0,    0, 1, 0x40, 0, 0};
  EXPECT_EQ(bytes, expected);
  auto control = decode_control(bytes);
  ASSERT_TRUE(control);
  EXPECT_EQ(control->type, QRTR_TYPE_NEW_SERVER);
  EXPECT_EQ(control->server, (ServerAddress{0xE7, 0x101, 1, 0x4001}));
}

TEST(ControlPacket, IsRefusedWithAnotherSize) {
  EXPECT_FALSE(decode_control(Bytes(19)));
  EXPECT_FALSE(decode_control(Bytes(21)));
  EXPECT_TRUE(decode_control(Bytes(20)));
}

TEST(Endpoint, IsParsed) {
  auto path = parse_endpoint("unix:/run/modem");
  ASSERT_TRUE(path);
  EXPECT_EQ(path->kind, TransportKind::unix_socket);
  EXPECT_EQ(path->path, "/run/modem");
  ASSERT_TRUE(parse_endpoint("qrtr"));
  EXPECT_EQ(parse_endpoint("qrtr")->kind, TransportKind::qrtr);
}

TEST(Endpoint, IsNotParsedFromOtherStrings) {
  for (const char* text : {"", "unix:", "unix", "QRTR", "qrtr:", "tcp:1", "/run/modem"}) {
    EXPECT_FALSE(parse_endpoint(text)) << text;
  }
}

TEST(Endpoint, HasADefault) {
  unsetenv("QOREXT_MODEM");
  EXPECT_EQ(endpoint_from_environment()->path, "/run/qorext_modem.sock");
  ScopedEnv modem("QOREXT_MODEM", "unix:/tmp/m");
  EXPECT_EQ(endpoint_from_environment()->path, "/tmp/m");
}

}  // namespace
}  // namespace transport_test
