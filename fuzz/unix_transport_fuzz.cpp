// SPDX-License-Identifier: Apache-2.0
// The Unix transport: a server whose clients send anything at any time, and a watch and a channel
// whose server does.
#include <fuzzer/FuzzedDataProvider.h>
#include <poll.h>
#include <sys/socket.h>

#include <functional>

#include "fuzz/require.h"
#include "fuzz/scratch.h"
#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/unix_socket.h"

namespace {

using namespace qmi_transport;
using Bytes = std::vector<uint8_t>;

constexpr size_t kMaxSteps = 40;
constexpr size_t kMaxClients = 4;
constexpr size_t kMaxSent = 64;
constexpr size_t kQueue = 4096;  // of a client that does not read
constexpr uint32_t kServices[] = {2, 3, 0xE1};
constexpr uint32_t kVersion = 1;
constexpr uint32_t kControlTypes[] = {QRTR_TYPE_HELLO, QRTR_TYPE_NEW_SERVER, QRTR_TYPE_DEL_SERVER,
                                      QRTR_TYPE_NEW_LOOKUP, QRTR_TYPE_DEL_CLIENT};
constexpr std::chrono::milliseconds kNoPatience{0};

std::string socket_path() {
  static const fuzz::Scratch scratch;
  return scratch.root() / "modem";
}

Endpoint endpoint() { return {Endpoint::Kind::unix_socket, socket_path()}; }

// What the product is about to wait for can be brought about first.
std::function<void()> g_before_wait;

Bytes drawn_packet(FuzzedDataProvider& input) {
  if (input.ConsumeBool()) {
    return input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(1, kMaxSent));
  }
  auto packet = encode_control({input.PickValueInArray(kControlTypes),
                                {.service = input.PickValueInArray(kServices),
                                 .instance = input.ConsumeIntegralInRange(0U, 2U),
                                 .node = input.ConsumeIntegralInRange(0U, 2U),
                                 .port = input.ConsumeIntegralInRange(0U, 5U)}});
  return {packet.begin(), packet.end()};
}

void send_raw(int socket, const Bytes& packet) {
  if (packet.empty()) return;
  send(socket, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

class ServerSide {
 public:
  explicit ServerSide(FuzzedDataProvider& input)
      : input_(input), server_(serve(endpoint(), {.stuck_after = kNoPatience, .queue = kQueue})) {
    FUZZ_REQUIRE(server_ != nullptr);
  }

  void step() {
    switch (input_.ConsumeIntegralInRange(0, 6)) {
      case 0:
        server_->publish(input_.PickValueInArray(kServices), kVersion);
        return;
      case 1:
        server_->withdraw(input_.PickValueInArray(kServices));
        return;
      case 2:
        if (clients_.size() < kMaxClients) clients_.push_back(unix_connect(socket_path()));
        return;
      case 3:
        if (!clients_.empty()) clients_.pop_back();
        return;
      case 4:
        send_to_peers();
        return;
      default:
        send_as_client();
    }
    serve_all();
  }

  // Ends when nothing is left to do: every event takes something off a queue.
  void serve_all() {
    for (pollfd ready{server_->fd(), POLLIN, 0}; poll(&ready, 1, 0) == 1;) take_event();
  }

 private:
  void take_event() {
    static Bytes buffer(kMaxPacketSize);
    ServerEvent event = server_->next(buffer);
    if (event.kind == ServerEvent::Kind::nothing) return;
    bool is_dropped = event.kind == ServerEvent::Kind::peer_dropped;
    FUZZ_REQUIRE(event.size <= (is_dropped ? kQueue : kMaxSent));
    FUZZ_REQUIRE(std::find(std::begin(kServices), std::end(kServices), event.service) !=
                 std::end(kServices));
    FUZZ_REQUIRE(is_peer(event.service, event.peer) == (event.kind == ServerEvent::Kind::packet));
  }

  bool is_peer(uint32_t service, Peer peer) const {
    auto peers = server_->peers(service);
    return std::find(peers.begin(), peers.end(), peer) != peers.end();
  }

  void send_to_peers() {
    Bytes packet = drawn_packet(input_);
    for (uint32_t service : kServices) {
      for (Peer peer : server_->peers(service)) server_->send(peer, packet);
    }
  }

  void send_as_client() {
    if (clients_.empty()) return;
    auto index = input_.ConsumeIntegralInRange<size_t>(0, clients_.size() - 1);
    send_raw(clients_[index].get(), drawn_packet(input_));
    if (input_.ConsumeBool()) serve_all();
  }

  FuzzedDataProvider& input_;
  std::unique_ptr<Server> server_;
  std::vector<ScopedFd> clients_;
};

// The listening end of what the product connects to.
class RawServer {
 public:
  explicit RawServer(FuzzedDataProvider& input) : input_(input), listener_(unix_socket()) {
    auto address = unix_address(socket_path());
    auto* name = reinterpret_cast<const sockaddr*>(&*address);
    FUZZ_REQUIRE(bind(listener_.get(), name, sizeof *address) == 0);
    FUZZ_REQUIRE(listen(listener_.get(), 1) == 0);
  }
  ~RawServer() { unlink(socket_path().c_str()); }
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  // Takes the product's connection, sends it anything and closes it.
  void answer() {
    ScopedFd socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) return;
    auto count = input_.ConsumeIntegralInRange(0, 4);
    for (int i = 0; i < count; ++i) send_raw(socket.get(), drawn_packet(input_));
  }

 private:
  FuzzedDataProvider& input_;
  ScopedFd listener_;
};

void check_watch(FuzzedDataProvider& input) {
  RawServer server(input);
  uint32_t service = input.PickValueInArray(kServices);
  auto watch = watch_service(endpoint(), service, kVersion);
  FUZZ_REQUIRE(watch != nullptr);
  server.answer();
  Announcement told{};
  for (Status status = Status::ok; status != Status::gone && status != Status::failed;) {
    status = watch->next(told);
    if (status != Status::ok || told.kind == Announcement::Kind::end_of_list) continue;
    FUZZ_REQUIRE(told.server.service == service && version_of(told.server.instance) == kVersion);
  }
}

void check_channel(FuzzedDataProvider& input) {
  RawServer server(input);
  g_before_wait = [&server] { server.answer(); };
  auto channel = open_channel(endpoint(), {kServices[0], kVersion, 1, 1});
  g_before_wait = nullptr;
  if (channel == nullptr) return;
  Bytes buffer(kMaxPacketSize);
  Received received{Status::ok};
  while (received.status == Status::ok) {
    received = channel->receive(buffer);
    FUZZ_REQUIRE(received.size <= kMaxSent);
  }
  channel->send(drawn_packet(input), Deadline::min());
}

}  // namespace

extern "C" int __real_poll(pollfd*, nfds_t, int);
extern "C" int __wrap_poll(pollfd* sockets, nfds_t count, int timeout) {
  if (g_before_wait) g_before_wait();
  return __real_poll(sockets, count, timeout);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  check_watch(input);
  check_channel(input);
  ServerSide server(input);
  for (size_t i = 0; i < kMaxSteps && input.remaining_bytes() > 0; ++i) server.step();
  server.serve_all();
  return 0;
}
