// SPDX-License-Identifier: Apache-2.0
// The Unix transport: a server whose clients send any bytes at any time, and a watch and a channel
// with such a server.
#include <poll.h>
#include <sys/socket.h>

#include <functional>

#include "fuzz/transport.h"
#include "platform/linux/qmi_transport/unix_socket.h"

namespace {

using namespace qmi_transport;
using fuzz::Bytes;
using fuzz::kMaxSent;
using fuzz::kQueue;
using fuzz::kServices;
using fuzz::kVersion;

constexpr size_t kMaxSteps = 40;
constexpr size_t kMaxClients = 4;
constexpr uint32_t kControlTypes[] = {QRTR_TYPE_HELLO, QRTR_TYPE_NEW_SERVER, QRTR_TYPE_DEL_SERVER,
                                      QRTR_TYPE_NEW_LOOKUP, QRTR_TYPE_DEL_CLIENT};

std::string socket_path() { return fuzz::scratch_root() / "modem"; }

Endpoint endpoint() { return {Endpoint::Kind::unix_socket, socket_path()}; }

// Called before the product waits, to cause the event that it waits for.
std::function<void()> g_before_wait;

Bytes consume_packet(FuzzedDataProvider& input) {
  if (input.ConsumeBool()) {
    return fuzz::consume_bytes(input, kMaxSent, 1);
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
      : input_(input),
        server_(serve(endpoint(), {.stuck_after = std::chrono::milliseconds(0), .queue = kQueue})) {
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
        fuzz::send_to_peers(*server_, consume_packet(input_));
        return;
      default:
        send_as_client();
    }
    serve_all();
  }

  // Ends because every event removes something from a queue.
  void serve_all() {
    for (pollfd ready{server_->fd(), POLLIN, 0}; poll(&ready, 1, 0) == 1;) take_event();
  }

 private:
  void take_event() {
    ServerEvent event;
    if (!fuzz::take_event(*server_, event)) return;
    FUZZ_REQUIRE(std::find(std::begin(kServices), std::end(kServices), event.service) !=
                 std::end(kServices));
  }

  void send_as_client() {
    if (clients_.empty()) return;
    auto index = input_.ConsumeIntegralInRange<size_t>(0, clients_.size() - 1);
    send_raw(clients_[index].get(), consume_packet(input_));
    if (input_.ConsumeBool()) serve_all();
  }

  FuzzedDataProvider& input_;
  std::unique_ptr<Server> server_;
  std::vector<ScopedFd> clients_;
};

// The listening socket that the product connects to.
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

  // Accepts the product's connection, sends any packets and closes it.
  void answer() {
    ScopedFd socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) return;
    auto count = input_.ConsumeIntegralInRange(0, 4);
    for (int i = 0; i < count; ++i) send_raw(socket.get(), consume_packet(input_));
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
  Announcement announcement{};
  for (Status status = Status::ok; status != Status::gone && status != Status::failed;) {
    status = watch->next(announcement);
    if (status == Status::ok) fuzz::check_announcement(announcement, service);
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
  channel->send(consume_packet(input), Deadline::min());
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
