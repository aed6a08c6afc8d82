// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/qrtr_emulation.h"

#include <dlfcn.h>
#include <errno.h>
#include <poll.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace qrtr_emulation {
namespace {

constexpr uint32_t kFirstPort = 0x4000;
constexpr uint32_t kLastPort = 0x7FFF;
constexpr size_t kMaxPacket = 65535;
// How long the name service waits for a receiver whose queue is full: Unix datagram sockets have
// shorter queues than the kernel's QRTR sockets.
constexpr int kControlTimeoutMs = 1000;

// The port of each descriptor, 0 for those that are not emulated.
std::array<std::atomic<uint32_t>, 65536> g_ports;

// Null for a descriptor outside the table.
std::atomic<uint32_t>* slot_of(int fd) {
  auto index = static_cast<size_t>(fd);
  return index < g_ports.size() ? &g_ports[index] : nullptr;
}

uint32_t port_of(int fd) {
  auto* slot = slot_of(fd);
  return slot != nullptr ? slot->load() : 0;
}

sockaddr_un address_of(uint32_t port) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path_of(port).copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int real_socket(int domain, int type, int protocol) {
  static auto* const call = next<int(int, int, int)>("socket");
  return call(domain, type, protocol);
}
ssize_t real_recvmsg(int fd, msghdr* message, int flags) {
  static auto* const call = next<ssize_t(int, msghdr*, int)>("recvmsg");
  return call(fd, message, flags);
}
int real_close(int fd) {
  static auto* const call = next<int(int)>("close");
  return call(fd);
}

// Binds to a free port. Returns 0 when there is none (errno is set).
uint32_t bind_to_free_port(int fd) {
  static std::atomic<uint32_t> next_port = static_cast<uint32_t>(getpid());
  for (uint32_t tries = 0; tries <= kLastPort - kFirstPort; ++tries) {
    uint32_t port = kFirstPort + next_port++ % (kLastPort - kFirstPort + 1);
    sockaddr_un address = address_of(port);
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
      chmod(address.sun_path, kFileMode);
      return port;
    }
    if (errno != EADDRINUSE) return 0;
  }
  return 0;
}

int open_emulated(int type) {
  int fd = real_socket(AF_UNIX, type, 0);
  if (fd < 0) return fd;
  auto* slot = slot_of(fd);
  uint32_t port = slot != nullptr ? bind_to_free_port(fd) : 0;
  if (port == 0) {
    int saved = errno;
    ::close(fd);
    errno = saved;
    return -1;
  }
  *slot = port;
  return fd;
}

// A socket for one delivery. The kernel charges unread packets to the sending socket, so with one
// socket for all, a receiver that does not read would block deliveries to the others.
class DeliverySocket {
 public:
  DeliverySocket() : fd_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
  DeliverySocket(const DeliverySocket&) = delete;
  DeliverySocket& operator=(const DeliverySocket&) = delete;
  ~DeliverySocket() {
    int saved = errno;
    ::close(fd_);
    errno = saved;
  }
  int fd() const { return fd_; }

 private:
  int fd_;
};

int error_of_delivery() {
  switch (errno) {
    case ENOENT:
    case ECONNREFUSED:
      return ENODEV;
    case EAGAIN:
      return ENOSPC;
    default:
      return errno;
  }
}

// A packet after its sender, in one datagram.
struct Scatter {
  iovec parts[2];
  msghdr message{};

  Scatter(Sender* sender, void* data, size_t size)
      : parts{{sender, sizeof(*sender)}, {data, size}} {
    message.msg_iov = parts;
    message.msg_iovlen = 2;
  }
};

ssize_t send_emulated(uint32_t port, const void* data, size_t size, const sockaddr_qrtr& to) {
  std::span packet(static_cast<const uint8_t*>(data), size);
  int error = 0;
  if (size > kMaxPacket) {
    error = EMSGSIZE;
  } else if (to.sq_port == QRTR_PORT_CTRL) {
    on_control(port, packet);
  } else {
    error = to.sq_node == kNode ? deliver({kNode, port}, to.sq_port, packet) : EHOSTUNREACH;
  }
  errno = error;
  return error == 0 ? static_cast<ssize_t>(size) : -1;
}

// Closes the sockets that are open when the process exits.
__attribute__((destructor)) void close_all() {
  for (auto& port : g_ports) {
    uint32_t open = port.exchange(0);
    if (open != 0 && folder()) on_close(open);
  }
}

}  // namespace

std::optional<std::string> folder() {
  const char* name = getenv("QRTR_EMULATION");
  if (name == nullptr || *name == '\0') return std::nullopt;
  return name;
}

std::string path_of(uint32_t port) { return *folder() + "/" + std::to_string(port); }

int deliver(const Sender& from, uint32_t to_port, std::span<const uint8_t> packet) {
  Sender sender = from;
  Scatter scatter(&sender, const_cast<uint8_t*>(packet.data()), packet.size());
  sockaddr_un address = address_of(to_port);
  scatter.message.msg_name = &address;
  scatter.message.msg_namelen = sizeof(address);

  DeliverySocket socket;
  int retries = from.port == QRTR_PORT_CTRL ? kControlTimeoutMs : 0;
  for (;; --retries) {
    if (sendmsg(socket.fd(), &scatter.message, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) return 0;
    if (errno != EAGAIN || retries <= 0) return error_of_delivery();
    poll(nullptr, 0, 1);
  }
}

bool is_open(uint32_t port) {
  DeliverySocket probe;
  sockaddr_un address = address_of(port);
  return connect(probe.fd(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
}

}  // namespace qrtr_emulation

using namespace qrtr_emulation;

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int socket(int domain, int type, int protocol) noexcept {
  bool emulated = domain == AF_QIPCRTR && folder();
  return emulated ? open_emulated(type) : real_socket(domain, type, protocol);
}

EXPORTED int close(int fd) {
  uint32_t port = port_of(fd);
  if (port == 0) return real_close(fd);
  *slot_of(fd) = 0;
  int result = real_close(fd);
  if (folder()) on_close(port);
  return result;
}

EXPORTED int getsockname(int fd, sockaddr* address, socklen_t* length) noexcept {
  static auto* const call = next<int(int, sockaddr*, socklen_t*)>("getsockname");
  uint32_t port = port_of(fd);
  if (port == 0) return call(fd, address, length);
  sockaddr_qrtr own{AF_QIPCRTR, kNode, port};
  memcpy(address, &own, std::min<size_t>(*length, sizeof(own)));
  *length = sizeof(own);
  return 0;
}

EXPORTED ssize_t sendto(int fd, const void* data, size_t size, int flags, const sockaddr* to,
                        socklen_t length) {
  static auto* const call =
      next<ssize_t(int, const void*, size_t, int, const sockaddr*, socklen_t)>("sendto");
  uint32_t port = port_of(fd);
  if (port == 0) return call(fd, data, size, flags, to, length);
  sockaddr_qrtr target{};
  memcpy(&target, to, std::min<size_t>(length, sizeof(target)));
  return send_emulated(port, data, size, target);
}

EXPORTED ssize_t recvmsg(int fd, msghdr* message, int flags) {
  if (port_of(fd) == 0) return real_recvmsg(fd, message, flags);
  const iovec& part = message->msg_iov[0];
  Sender sender{};
  Scatter scatter(&sender, part.iov_base, part.iov_len);
  ssize_t received = real_recvmsg(fd, &scatter.message, flags);
  message->msg_flags = scatter.message.msg_flags;
  if (received < 0) return received;
  sockaddr_qrtr origin{AF_QIPCRTR, sender.node, sender.port};
  memcpy(message->msg_name, &origin, std::min<size_t>(message->msg_namelen, sizeof(origin)));
  message->msg_namelen = sizeof(origin);
  return received - static_cast<ssize_t>(sizeof(sender));
}
