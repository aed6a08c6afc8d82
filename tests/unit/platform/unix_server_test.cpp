// SPDX-License-Identifier: Apache-2.0
// The Unix socket's own rules: its file, and connections that do not behave.
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/unix_socket.h"
#include "platform/linux/qmi_transport/wait.h"
#include "tests/unit/platform/scripted_modem.h"

namespace {

using namespace test_support;
using namespace qmi_transport;

constexpr uint32_t kService = 0xE7;
constexpr uint32_t kInstance = 1;

class UnixServer : public testing::Test {
 protected:
  ScopedFd connection() const { return unix_connect(place_.socket_path()); }

  // A connection whose first packet is this.
  ScopedFd greeted_with(std::span<const uint8_t> packet) const {
    ScopedFd socket = connection();
    EXPECT_EQ(unix_send(socket.get(), packet, in(kPatience)), Status::ok);
    return socket;
  }

  static Status read(const ScopedFd& socket) {
    Bytes buffer(kMaxPacketSize);
    EXPECT_TRUE(wait_for(socket.get(), POLLIN, in(kPatience)));
    return unix_receive(socket.get(), buffer).status;
  }

  bool is_serving() const {
    auto names = watch_service(place_.endpoint(), kService, 1);
    Announcement announcement{};
    return names != nullptr && wait_for(names->fd(), POLLIN, in(kPatience)) &&
           names->next(announcement) == Status::ok;
  }

  ModemPlace place_{TransportKind::unix_socket};
};

TEST_F(UnixServer, TakesThePlaceOfADeadOne) {
  {
    ScopedFd dead = unix_socket();
    auto address = unix_address(place_.socket_path());
    ASSERT_EQ(bind(dead.get(), reinterpret_cast<sockaddr*>(&*address), sizeof(*address)), 0);
  }
  ASSERT_TRUE(std::filesystem::exists(place_.socket_path()));
  EXPECT_NE(serve(place_.endpoint()), nullptr);
}

TEST_F(UnixServer, DoesNotTakeThePlaceOfALivingOne) {
  ScriptedModem modem(place_.endpoint());
  errno = 0;
  EXPECT_EQ(serve(place_.endpoint()), nullptr);
  EXPECT_EQ(errno, EADDRINUSE);
  EXPECT_TRUE(is_serving());
}

TEST_F(UnixServer, DoesNotTakeThePlaceOfAFile) {
  std::ofstream(place_.socket_path()) << "content";
  EXPECT_EQ(serve(place_.endpoint()), nullptr);
  EXPECT_EQ(content_of(place_.socket_path()), "content");
}

TEST_F(UnixServer, RemovesItsFileAtItsEnd) {
  auto server = serve(place_.endpoint());
  EXPECT_TRUE(std::filesystem::exists(place_.socket_path()));
  server.reset();
  EXPECT_FALSE(std::filesystem::exists(place_.socket_path()));
}

TEST_F(UnixServer, LeavesAFileThatHasReplacedItsOwn) {
  auto server = serve(place_.endpoint());
  std::filesystem::remove(place_.socket_path());
  std::ofstream(place_.socket_path()) << "content";
  server.reset();
  EXPECT_EQ(content_of(place_.socket_path()), "content");
}

TEST_F(UnixServer, NeedsAPathThatFitsASocketAddress) {
  Endpoint far{Endpoint::Kind::unix_socket, "/tmp/" + std::string(200, 'x')};
  errno = 0;
  EXPECT_EQ(serve(far), nullptr);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_EQ(watch_service(far, kService, 1), nullptr);
  EXPECT_EQ(open_channel(far, {}), nullptr);
}

TEST_F(UnixServer, IsNotThereBeforeItIsServed) {
  errno = 0;
  EXPECT_EQ(watch_service(place_.endpoint(), kService, 1), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(UnixServer, ClosesAConnectionThatBeginsWithGarbage) {
  ScriptedModem modem(place_.endpoint());
  for (size_t size : std::vector<size_t>{1, 7, 19, 20, 21, 500, 65542}) {
    ScopedFd socket = greeted_with(Bytes(size, 0x55));
    EXPECT_EQ(read(socket), Status::gone) << size;
  }
  EXPECT_TRUE(is_serving());
}

TEST_F(UnixServer, ClosesAConnectionThatBeginsWithAnEmptyPacket) {
  ScriptedModem modem(place_.endpoint());
  EXPECT_EQ(read(greeted_with({})), Status::gone);
  EXPECT_TRUE(is_serving());
}

TEST_F(UnixServer, ClosesAConnectionThatSendsMoreThanAPacket) {
  ScriptedModem modem(place_.endpoint());
  EXPECT_EQ(read(greeted_with(Bytes(kMaxPacketSize + 1))), Status::gone);
  EXPECT_TRUE(is_serving());
}

TEST_F(UnixServer, ClosesALookupThatSaysMore) {
  ScriptedModem modem(place_.endpoint());
  ScopedFd socket = greeted_with(encode_control({QRTR_TYPE_NEW_LOOKUP, {.service = kService}}));
  EXPECT_EQ(read(socket), Status::ok);
  unix_send(socket.get(), Bytes(7), in(kPatience));
  EXPECT_EQ(read(socket), Status::gone);
  EXPECT_TRUE(is_serving());
}

TEST_F(UnixServer, TellsNobodyOfAConnectionThatNeverSpoke) {
  ScriptedModem modem(place_.endpoint());
  modem.publish(kService, kInstance);
  connection();
  EXPECT_TRUE(is_serving());
  EXPECT_EQ(modem.peers_gone(), 0u);
}

TEST_F(UnixServer, OutlivesAFloodOfConnections) {
  ScriptedModem modem(place_.endpoint());
  std::vector<ScopedFd> flood;
  for (int i = 0; i < 400; ++i) flood.push_back(connection());
  flood.clear();
  EXPECT_TRUE(eventually([&] { return is_serving(); }));
}

TEST_F(UnixServer, WelcomesAClientWithItsOwnWords) {
  ScriptedModem modem(place_.endpoint());
  modem.publish(kService, kInstance);
  auto hello = encode_control({QRTR_TYPE_HELLO, {.node = 1, .port = 1}});
  ScopedFd socket = greeted_with(hello);
  ASSERT_TRUE(wait_for(socket.get(), POLLIN, in(kPatience)));
  std::array<uint8_t, kControlSize> answer{};
  EXPECT_EQ(unix_receive(socket.get(), answer).size, kControlSize);
  EXPECT_EQ(answer, hello);
}

TEST_F(UnixServer, IsLeftAloneByAClientThatCannotConnect) {
  ScopedFd listener = unix_socket();
  auto address = unix_address(place_.socket_path());
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&*address), sizeof(*address)), 0);
  EXPECT_EQ(open_channel(place_.endpoint(), {kService, kInstance, 1, 1}), nullptr);
}

TEST(ControlPacket, IsThatOfTheQrtrNameService) {
  auto bytes = encode_control({QRTR_TYPE_NEW_SERVER, {0xE7, 0x101, 1, 0x4001}});
  const std::array<uint8_t, 20> expected = {4, 0, 0, 0, 0xE7, 0, 0, 0,    1, 1,
                                            0, 0, 1, 0, 0,    0, 1, 0x40, 0, 0};
  EXPECT_EQ(bytes, expected);
  auto control = decode_control(bytes);
  ASSERT_TRUE(control);
  EXPECT_EQ(control->type, QRTR_TYPE_NEW_SERVER);
  EXPECT_EQ(control->server, (ServerAddress{0xE7, 0x101, 1, 0x4001}));
}

TEST(ControlPacket, HasItsOneSize) {
  EXPECT_FALSE(decode_control(Bytes(19)));
  EXPECT_FALSE(decode_control(Bytes(21)));
  EXPECT_TRUE(decode_control(Bytes(20)));
}

TEST(Endpoint, IsReadFromItsText) {
  auto path = parse_endpoint("unix:/run/modem");
  ASSERT_TRUE(path);
  EXPECT_EQ(path->kind, TransportKind::unix_socket);
  EXPECT_EQ(path->path, "/run/modem");
  ASSERT_TRUE(parse_endpoint("qrtr"));
  EXPECT_EQ(parse_endpoint("qrtr")->kind, TransportKind::qrtr);
}

TEST(Endpoint, IsNotReadFromOtherTexts) {
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
