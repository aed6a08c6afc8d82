// SPDX-License-Identifier: Apache-2.0
// The QRTR transport on emulated sockets: the input determines every packet, its sender and every
// failure.
#include <errno.h>
#include <libqrtr.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "fuzz/transport.h"
#include "platform/linux/qmi_transport/implementations.h"

namespace {

using namespace qmi_transport;
using fuzz::Bytes;
using fuzz::kMaxSent;
using fuzz::kQueue;
using fuzz::kServices;
using fuzz::kVersion;

constexpr size_t kMaxSteps = 60;
constexpr uint32_t kNodes = 2;
constexpr uint32_t kPorts = 5;
constexpr uint32_t kControlTypes[] = {QRTR_TYPE_NEW_SERVER, QRTR_TYPE_DEL_SERVER,
                                      QRTR_TYPE_DEL_CLIENT, QRTR_TYPE_BYE, QRTR_TYPE_NEW_LOOKUP};
constexpr int kErrors[] = {EAGAIN, EPIPE, ENODEV, ENETRESET, EHOSTUNREACH, EBADF, ENOMEM};

FuzzedDataProvider* g_input = nullptr;

FuzzedDataProvider& input() { return *g_input; }

// Sets errno and returns true if the input requests a failure.
bool fails() {
  if (!input().ConsumeBool()) return false;
  errno = input().PickValueInArray(kErrors);
  return true;
}

Bytes consume_packet(uint32_t port) {
  if (port != QRTR_PORT_CTRL || input().ConsumeBool()) {
    return fuzz::consume_bytes(input(), kMaxSent);
  }
  auto packet = encode_control({input().PickValueInArray(kControlTypes),
                                {.service = input().ConsumeIntegralInRange(0U, 3U),
                                 .instance = input().ConsumeIntegralInRange(0U, 2U),
                                 .node = input().ConsumeIntegralInRange(0U, kNodes),
                                 .port = input().ConsumeIntegralInRange(0U, kPorts)}});
  return {packet.begin(), packet.end()};
}

class ServerSide {
 public:
  ServerSide()
      : server_(qrtr_serve({.stuck_after = std::chrono::milliseconds(0), .queue = kQueue})) {}
  explicit operator bool() const { return server_ != nullptr; }

  void step() {
    switch (input().ConsumeIntegralInRange(0, 5)) {
      case 0:
        server_->publish(input().PickValueInArray(kServices), kVersion);
        return;
      case 1:
        server_->withdraw(input().PickValueInArray(kServices));
        return;
      case 2:
        fuzz::send_to_peers(*server_, Bytes(input().ConsumeIntegralInRange<size_t>(0, kMaxSent)));
        return;
      default:
        ServerEvent event;
        fuzz::take_event(*server_, event);
    }
  }

 private:
  std::unique_ptr<Server> server_;
};

void check_watch() {
  uint32_t service = input().ConsumeIntegralInRange(0U, 3U);
  auto watch = qrtr_watch(service, kVersion);
  for (size_t i = 0; watch != nullptr && i < kMaxSteps; ++i) {
    Announcement announcement{};
    Status status = watch->next(announcement);
    if (status == Status::gone || status == Status::failed) return;
    if (status == Status::ok) fuzz::check_announcement(announcement, service);
  }
}

void check_channel() {
  auto channel = qrtr_channel({1, kVersion, 1, 1});
  if (channel == nullptr) return;
  Bytes buffer(kMaxPacketSize);
  for (Status status = Status::ok; status == Status::ok || status == Status::nothing;) {
    Received received = channel->receive(buffer);
    FUZZ_REQUIRE(received.size <= kMaxSent);
    status = input().remaining_bytes() > 0 ? received.status : Status::gone;
  }
  channel->send(buffer, Deadline::min());
}

}  // namespace

// The calls of libqrtr and the system. A socket is a signalled event descriptor: always readable.
extern "C" {

int __wrap_qrtr_open(int) { return fails() ? -1 : eventfd(1, EFD_CLOEXEC); }
int __wrap_qrtr_new_lookup(int, uint32_t, uint16_t, uint16_t) { return fails() ? -1 : 0; }
int __wrap_qrtr_publish(int, uint32_t, uint16_t, uint16_t) { return fails() ? -1 : 0; }
int __wrap_qrtr_bye(int, uint32_t, uint16_t, uint16_t) { return fails() ? -1 : 0; }

ssize_t __wrap_recvmsg(int, msghdr* message, int) {
  if (input().remaining_bytes() == 0) errno = ENETRESET;
  if (input().remaining_bytes() == 0 || fails()) return -1;
  uint32_t node = input().ConsumeIntegralInRange(0U, kNodes);
  uint32_t port =
      input().ConsumeBool() ? QRTR_PORT_CTRL : input().ConsumeIntegralInRange(0U, kPorts);
  const sockaddr_qrtr sender{AF_QIPCRTR, node, port};
  FUZZ_REQUIRE(message->msg_namelen == sizeof(sender) && message->msg_iovlen == 1);
  memcpy(message->msg_name, &sender, sizeof(sender));

  const Bytes packet = consume_packet(port);
  const iovec& part = message->msg_iov[0];
  size_t size = std::min(packet.size(), part.iov_len);
  if (size > 0) memcpy(part.iov_base, packet.data(), size);
  message->msg_flags = size < packet.size() ? MSG_TRUNC : 0;
  return static_cast<ssize_t>(size);
}

ssize_t __wrap_sendto(int, const void* packet, size_t size, int, const sockaddr* to, socklen_t) {
  const Bytes sent(static_cast<const uint8_t*>(packet), static_cast<const uint8_t*>(packet) + size);
  FUZZ_REQUIRE(to->sa_family == AF_QIPCRTR);
  return fails() ? -1 : static_cast<ssize_t>(sent.size());
}

}  // extern "C"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider from(data, size);
  g_input = &from;
  check_watch();
  check_channel();
  ServerSide server;
  for (size_t i = 0; server && i < kMaxSteps && from.remaining_bytes() > 0; ++i) server.step();
  return 0;
}
